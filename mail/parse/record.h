#ifndef ATTALVEN_MAIL_PARSE_RECORD_H
#define ATTALVEN_MAIL_PARSE_RECORD_H

// The records of a message as C++ sees them: owners, names for the codes, lists that grow at their
// tail, and the leaf parts for range-based loops.

#include <utility>

#include "mail/base/text.h"
#include "mail/parse.h"

namespace attalven {

using OwnedMessage = Owned<MailInfo, mailFree>;
using OwnedBody = Owned<MailBody, mailFreeBody>;
using OwnedAddress = Owned<MailAddress, mailFreeAddress>;
using OwnedParam = Owned<MailParam, mailFreeParam>;

/// Rows of `mime_types`.
enum MediaType {
    kUnknown,
    kAudio,
    kApplication,
    kImage,
    kMessage,
    kMultipart,
    kText,
    kVideo,
};

/// Rows of `encoding`, and the code that has none.
enum TransferEncoding {
    k7Bit,
    k8Bit,
    kQuotedPrintable,
    kBase64,
    kBinary,
    kUnknownEncoding,
    kUuencoded = 7,
};

/// The name of a major media type; a code outside the table counts as unknown.
inline const char* typeName(int type) {
    return mime_types[type >= kUnknown && type <= kVideo ? type : kUnknown];
}

/// Levels of multiparts, and of messages inside messages, that are entered. Deeper mail is made to
/// exhaust the stack or the processor; other mail software stops at 100 as well.
inline constexpr int kMaxNesting = 100;

/// Appends records at the tail of a chain that it owns, so that long lists stay linear.
template <typename Record, void (*Release)(Record**)>
class Chain {
  public:
    Chain() = default;
    ~Chain() { Release(&first_); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    Record* append(Owned<Record, Release> record) {
        Record* added = record.release();
        *tail_ = added;
        tail_ = &added->next;
        return added;
    }
    /// Hands the chain over; the Chain is empty afterwards.
    Record* take() {
        tail_ = &first_;
        return std::exchange(first_, nullptr);
    }

  private:
    Record* first_ = nullptr;
    Record** tail_ = &first_;
};

/// Holds the body index for its lifetime; without memory for it the message has no parts.
class LeafParts {
  public:
    explicit LeafParts(MailBody* root) : index_(mailGetBody(root)) {}
    ~LeafParts() { mailFreeBodyIdx(index_); }
    LeafParts(const LeafParts&) = delete;
    LeafParts& operator=(const LeafParts&) = delete;

    struct End {};
    class Iterator {
      public:
        explicit Iterator(MailBodyList** at) : at_(at) {}
        MailBody& operator*() const { return *(*at_)->body; }
        void operator++() { ++at_; }
        bool operator!=(End) const { return at_ && *at_; }

      private:
        MailBodyList** at_;
    };
    Iterator begin() const { return Iterator(index_); }
    End end() const { return {}; }

    template <typename Predicate>
    bool any(Predicate holds) const {
        for (const MailBody& part : *this)
            if (holds(part)) return true;
        return false;
    }
    size_t count() const {
        size_t n = 0;
        for (Iterator part = begin(); part != End(); ++part) n++;
        return n;
    }

  private:
    MailBodyList** index_;
};

/// Whether an address has a name to show: an encoded word may hold nothing.
inline bool isNamed(const MailAddress& address) {
    return !viewOf(address.name).empty();
}

inline bool hasSubType(const MailBody& part, string_view subType) {
    return equalNoCase(viewOf(part.subType), subType);
}

}  // namespace attalven

#endif
