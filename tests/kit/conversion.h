#ifndef ATTALVEN_TESTS_KIT_CONVERSION_H
#define ATTALVEN_TESTS_KIT_CONVERSION_H

// One whole conversion through an interface of iconv's form, the closing of the shift state
// included.

#include <cerrno>
#include <ostream>
#include <string>
#include <vector>

namespace kit {

struct Outcome {
    std::string text;
    int error = 0;
    size_t consumed = 0;
    bool operator==(const Outcome&) const = default;
    friend std::ostream& operator<<(std::ostream& to, const Outcome& o) {
        return to << '"' << o.text << "\", errno " << o.error << " at " << o.consumed;
    }
};

/// Through an output area of `step` bytes at a time, from an input area of its exact size.
template <typename Convert>
Outcome convertAll(Convert convert, const std::string& text, size_t step) {
    Outcome o;
    std::vector<char> exact(text.begin(), text.end()), area(step);
    char nothing = 0, *in = exact.empty() ? &nothing : exact.data();
    size_t left = text.size();
    for (bool closing = false;;) {
        char* out = area.data();
        size_t room = step;
        size_t result =
            closing ? convert(nullptr, nullptr, &out, &room) : convert(&in, &left, &out, &room);
        o.error = result == static_cast<size_t>(-1) ? errno : 0;
        o.text.append(area.data(), step - room);
        o.consumed = text.size() - left;
        if (o.error == E2BIG && room < step) continue;
        if (o.error || closing) return o;
        closing = true;
    }
}

}  // namespace kit

#endif
