// The base64 kernel. The encoder's state is its column, the decoder's the group of four places that
// it fills. Clean stretches go through vector code where the processor has it, else by table; every
// other byte goes one at a time by the rules: "=" fills a place without data, any other byte is
// skipped. Survives any bytes: output depends on nothing but the number of places filled.

#include "base64.h"

#include <array>

#include "base64_vector.h"

namespace attalven {

namespace {

/// Value of each character of the alphabet, -1 for every other byte.
constexpr std::array<int8_t, 256> kValues = [] {
    std::array<int8_t, 256> values{};
    for (auto& v : values) v = -1;
    for (int8_t i = 0; i < 64; i++) values[byteOf(kBase64Alphabet[i])] = i;
    return values;
}();

/// The two characters of every 12 bits.
constexpr auto kPairs = [] {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (size_t i = 0; i < pairs.size(); i++)
        pairs[i] = {kBase64Alphabet[i >> 6], kBase64Alphabet[i & 63]};
    return pairs;
}();

int valueOf(char c) {
    return kValues[byteOf(c)];
}

void encodeGroup(const char* s, char* out) {
    unsigned bits = static_cast<unsigned>(byteOf(s[0]) << 16 | byteOf(s[1]) << 8 | byteOf(s[2]));
    auto high = kPairs[bits >> 12], low = kPairs[bits & 4095];
    out[0] = high[0], out[1] = high[1], out[2] = low[0], out[3] = low[1];
}

/// One or two bytes that end a text.
void encodeRest(string_view rest, char* out) {
    const char group[3] = {rest[0], rest.size() > 1 ? rest[1] : '\0', '\0'};
    encodeGroup(group, out);
    out[3] = kBase64Alphabet[64];
    if (rest.size() == 1) out[2] = kBase64Alphabet[64];
}

}  // namespace

size_t base64Encode(Base64Encoder& e, string_view bytes, char* out) {
    char* o = out;
    while (!bytes.empty()) {
        if (e.vector && e.column == 0 && e.lineLength >= kBase64Block) {
            size_t lineBytes = e.lineLength / 4 * 3, lines = bytes.size() / lineBytes;
            base64EncodeLines(bytes.data(), lines, e.lineLength, o);
            bytes.remove_prefix(lines * lineBytes);
            o += lines * (e.lineLength + 1);
            if (bytes.empty()) break;
        }
        size_t groups = (bytes.size() + 2) / 3;
        if (e.lineLength) groups = std::min(groups, (e.lineLength - e.column) / 4);
        for (size_t i = 0; i < groups; i++, o += 4) {
            if (bytes.size() >= 3)
                encodeGroup(bytes.data(), o);
            else
                encodeRest(bytes, o);
            bytes.remove_prefix(std::min<size_t>(3, bytes.size()));
        }
        e.column += groups * 4;
        if (e.lineLength && e.column == e.lineLength) {
            *o++ = '\n';
            e.column = 0;
        }
    }
    return static_cast<size_t>(o - out);
}

namespace {

/// One step of the decoder over one text: where it reads and writes.
struct DecodeRun {
    Base64Decoder& d;
    const char *s, *end;
    char* out;
    size_t uncounted = 0;    // written for pads, of this line when decoding by line
    size_t lineLength = 76;  // of the last line seen: the next ones are likely as long

    size_t left() const { return static_cast<size_t>(end - s); }
    /// Whole groups of characters of the alphabet.
    void takeClean() {
        if (d.vector) {
            s += base64DecodeLines(s, left(), lineLength, out);
            s += base64DecodeBlocks(s, left(), out);
        }
        while (left() >= 4) {
            int bits =
                valueOf(s[0]) << 18 | valueOf(s[1]) << 12 | valueOf(s[2]) << 6 | valueOf(s[3]);
            if (bits < 0) break;
            putGroup(static_cast<uint32_t>(bits));
            s += 4;
        }
    }

    void putGroup(uint32_t bits) {
        out[0] = static_cast<char>(bits >> 16);
        out[1] = static_cast<char>(bits >> 8);
        out[2] = static_cast<char>(bits);
        out += 3;
    }

    void takeByte() {
        char c = *s++;
        if (c == '\n' && d.byLine) return endLine();
        int value = valueOf(c);
        if (value < 0 && c != kBase64Alphabet[64]) return;
        d.bits = d.bits << 6 | static_cast<uint32_t>(std::max(value, 0));
        if (value >= 0) d.data++;
        if (++d.places < 4) return;
        putGroup(d.bits);
        uncounted += d.data == 4 ? 0 : d.data == 0 ? 3 : 4 - d.data;
        dropGroup();
    }

    void endLine() {
        dropGroup();
        out -= uncounted;
        uncounted = 0;
    }
    void dropGroup() { d.places = d.data = d.bits = 0; }
};

}  // namespace

Base64Decoded base64Decode(Base64Decoder& d, string_view text, char* out) {
    DecodeRun run{d, text.data(), text.data() + text.size(), out};
    const char* lineStart = run.s;
    while (run.s < run.end) {
        // Clean lines are taken with their line feeds, which must not skip endLine().
        if (d.places == 0 && (run.uncounted == 0 || !d.byLine)) run.takeClean();
        if (run.s == run.end) break;
        run.takeByte();
        if (run.s[-1] != '\n') continue;
        size_t length = static_cast<size_t>(run.s - 1 - lineStart);
        if (length >= kBase64Block && length % 4 == 0) run.lineLength = length;
        lineStart = run.s;
    }
    size_t written = static_cast<size_t>(run.out - out);
    if (!d.byLine) return {written, written - run.uncounted};
    return {written - run.uncounted, written - run.uncounted};
}

}  // namespace attalven
