#ifndef ATTALVEN_HOST_KIT_PART_H
#define ATTALVEN_HOST_KIT_PART_H

// One part of a message: what it is, what it is called, what is in it.

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "mail/mail.h"

namespace host {

/// Codes of the table mime_types.
constexpr int kAudioType = 1, kApplicationType = 2, kImageType = 3, kMessageType = 4,
              kMultipartType = 5, kTextType = 6, kVideoType = 7;

bool isType(const MailBody& part, int type, const char* subType = nullptr);
/// "image/png", without bytes that no type has.
std::string typeText(const MailBody& part);
/// A picture that a browser only draws: its formats run nothing and load nothing.
bool isPlainPicture(const MailBody& part);
/// The type with which a part is sent: its own if nothing can be active in it.
std::string downloadType(const MailBody& part);
/// Whether the stored bytes are not the content.
bool isEncoded(const MailBody& part);

/// A file name made fit for every system, at most 120 characters, its ending kept: folders,
/// control, direction and reserved characters go. May become "".
std::string cleanName(const std::string& name);

/// The value of a Content-Disposition line that saves under `name` (RFC 6266).
std::string attachmentDisposition(const std::string& name);

/// Takes content in pieces until it gives false.
using Take = std::function<bool(std::string_view)>;

/// The decoded content of a part goes to `take`. `delimited`: without a line break at its end.
void decodePart(MailBody& part, FILE* file, bool delimited, const Take& take);

/// Length and CRC-32 (ISO 3309) of content.
class Measure {
  public:
    void add(std::string_view bytes);
    uint64_t size() const { return size_; }
    uint32_t crc() const { return ~crc_; }

  private:
    uint64_t size_ = 0;
    uint32_t crc_ = 0xFFFFFFFF;
};

}  // namespace host

#endif
