#ifndef ATTALVEN_MAIL_FOLDER_DIGEST_H
#define ATTALVEN_MAIL_FOLDER_DIGEST_H

// A 64-bit digest of a stream of bytes, the same however the stream is cut into pieces: it tells
// whether a file still holds what it held. Not for secrets; where an attacker could choose the
// bytes, a random key keeps him from choosing two texts with the same digest.

#include <bit>
#include <cstring>

#include "mail/base/ascii.h"

namespace attalven {

class Digest {
  public:
    explicit Digest(uint64_t key = 0) {
        for (uint64_t& lane : lanes_) lane = key = mixed(key + kStep);
    }

    void add(string_view s) {
        length_ += s.size();
        if (kept_ > 0) {
            size_t n = std::min(s.size(), kBlock - kept_);
            if (n) memcpy(rest_ + kept_, s.data(), n);
            kept_ += n;
            s = tail(s, n);
            if (kept_ < kBlock) return;
            addBlock(rest_);
        }
        for (; s.size() >= kBlock; s = tail(s, kBlock)) addBlock(s.data());
        kept_ = s.size();
        if (kept_) memcpy(rest_, s.data(), kept_);
    }
    void add(int64_t n) { add(string_view(reinterpret_cast<const char*>(&n), sizeof n)); }

    uint64_t value() const {
        char last[kBlock] = {};
        memcpy(last, rest_, kept_);
        Digest end = *this;
        end.addBlock(last);
        uint64_t all = length_;
        for (uint64_t lane : end.lanes_) all = mixed(all ^ lane);
        return all;
    }

  private:
    static constexpr size_t kLanes = 4, kBlock = kLanes * sizeof(uint64_t);
    static constexpr uint64_t kStep = 0x9E3779B97F4A7C15;

    // Each step is a bijection of the lane, so a change within one word always shows.
    void addBlock(const char* block) {
        for (size_t i = 0; i < kLanes; i++) {
            uint64_t word;
            memcpy(&word, block + i * sizeof word, sizeof word);
            lanes_[i] = std::rotl((lanes_[i] ^ word) * kStep, 29);
        }
    }
    static constexpr uint64_t mixed(uint64_t n) {
        n = (n ^ (n >> 32)) * 0xD6E8FEB86659FD93;
        n = (n ^ (n >> 32)) * 0xD6E8FEB86659FD93;
        return n ^ (n >> 32);
    }

    uint64_t lanes_[kLanes];
    char rest_[kBlock] = {};
    size_t kept_ = 0;
    uint64_t length_ = 0;
};

}  // namespace attalven

#endif
