// Formats come from files of the installation. "%n" writes to memory, "*" and "$" pick arguments
// at will, a width of two thousand million holds the process up: none of these passes.

#include "format_filter.h"

namespace attalven {

namespace {

constexpr int kMostColumns = 300;

constexpr bool isOneOf(char c, string_view set) {
    return set.find(c) != string_view::npos;
}

/// Reads one conversion; `rest` is what is left of the text after its "%".
struct Conversion {
    string_view rest;

    void skipFlags() {
        while (!rest.empty() && isOneOf(rest.front(), "-+ 0#")) rest.remove_prefix(1);
    }
    bool skipNumber() {
        int n = decimal(head(rest, !rest.empty() && isDigit(rest.front()) ? rest.size() : 0));
        while (!rest.empty() && isDigit(rest.front())) rest.remove_prefix(1);
        return n <= kMostColumns;
    }
    string_view takeLength() {
        size_t n = 0;
        if (!rest.empty() && isOneOf(rest.front(), "hlzjt")) n = 1;
        if (n && rest.size() > 1 && rest[1] == rest[0] && isOneOf(rest[0], "hl")) n = 2;
        string_view length = head(rest, n);
        rest.remove_prefix(n);
        return length;
    }
    bool takeType(string_view length, bool onlyInt) {
        if (rest.empty()) return false;
        char type = rest.front();
        rest.remove_prefix(1);
        if (isOneOf(type, "diuxXo")) return !onlyInt || length.empty();
        if (type == 'c') return length.empty();
        if (isOneOf(type, "eEfFgG")) return !onlyInt && (length.empty() || length == "l");
        return isOneOf(type, "sp") && !onlyInt && length.empty();
    }
    bool take(bool onlyInt) {
        skipFlags();
        if (!skipNumber()) return false;
        if (rest.starts_with('.')) {
            rest.remove_prefix(1);
            if (!skipNumber()) return false;
        }
        string_view length = takeLength();
        return takeType(length, onlyInt);
    }
};

}  // namespace

void filterFormat(string_view text, FormatArguments arguments, Text& out) {
    int used = 0;
    while (!text.empty()) {
        size_t plain = std::min(text.find('%'), text.size());
        out.append(head(text, plain));
        text.remove_prefix(plain);
        if (text.empty()) break;
        if (text.starts_with("%%")) {
            out.append("%%");
            text.remove_prefix(2);
            continue;
        }
        Conversion conversion{tail(text, 1)};
        size_t length = 1;
        if (used < arguments.count && conversion.take(arguments.onlyInt)) {
            used++;
            length = text.size() - conversion.rest.size();
        } else {
            out.append('%');
        }
        out.append(head(text, length));
        text.remove_prefix(length);
    }
}

}  // namespace attalven
