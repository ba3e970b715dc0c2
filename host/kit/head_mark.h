#ifndef ATTALVEN_HOST_KIT_HEAD_MARK_H
#define ATTALVEN_HOST_KIT_HEAD_MARK_H

// A message's header, whatever its Status line says: what tells copies of one message apart, which
// have the same Message-ID but other lines of the way that they came.

#include <sodium.h>

#include <array>
#include <string>
#include <string_view>

namespace host {

using Digest = std::array<unsigned char, 16>;
Digest digestOf(std::string_view bytes);

/// The same for bytes that come in pieces.
class DigestStream {
  public:
    DigestStream();
    void add(std::string_view bytes);
    Digest end();

  private:
    crypto_generichash_state state_;
};

/// Takes the Status lines off a header block, and gives the marks that they hold.
unsigned takeStatus(std::string& header);

/// The digest of a header without Status lines as links and actions carry it: 16 hexadecimal digits
/// and a colon, before the message's key.
constexpr size_t kMarkSize = 17;
std::string headMark(const Digest& digest);

}  // namespace host

#endif
