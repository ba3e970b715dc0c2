#ifndef ATTALVEN_HOST_MAILLIST_H
#define ATTALVEN_HOST_MAILLIST_H

// The list of a folder's messages: what is shown, and what its buttons do.

#include <string>
#include <vector>

#include "kit/folder.h"
#include "kit/request.h"
#include "kit/session.h"

namespace host {

enum class Order { date, from, subject, size };

/// Which part of which folder a list page shows; every link and form of it carries this.
struct ListView {
    std::string folder;
    Order order = Order::date;
    bool descending = true;
    int page = 1;

    /// From a request; PageError 404 for a folder that is none.
    ListView(const Request& request, const User& user);
    std::string sortName() const;  // "-date"
    std::string query() const;     // of a link to it
};

/// Columns of the list by name: "date", "from", "subject", "size".
const std::vector<const char*>& orderNames();

/// Does what a button says to the messages that are selected ("msg" fields, "number:name"). The
/// query of the notice for the page that follows, "" if something is to be confirmed first.
std::string runAction(const Request& request, const User& user, const ListView& view);

}  // namespace host

#endif
