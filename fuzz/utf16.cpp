// The conversion of UTF-16 input in chunks of any size, against the conversion of the whole input.
#include "utf16_source.h"

#include "reference/utf8.h"
#include "support/expect.h"
#include "support/input.h"
#include "text_source.h"

namespace {

// As much as is right, then '!' and the message.
std::string convertInChunks(const std::string& bytes, bool big, std::size_t chunk,
                            std::size_t atOnce, std::size_t capacity) {
    TextSource source(bytes, atOnce);
    tool::Utf16Source conversion(source, big, chunk);
    std::string result;
    std::string buffer(capacity, '\0');
    try {
        while (const std::size_t count = conversion.read(buffer.data(), buffer.size())) {
            FUZZ_EXPECT(count <= capacity);
            result.append(buffer, 0, count);
        }
        FUZZ_EXPECT(conversion.read(buffer.data(), buffer.size()) == 0);
    } catch (const tool::MalformedInput& error) {
        result += "!" + std::string(error.what());
    }
    return result;
}

// Ends after a zero unit, which the parser refuses.
std::string convertWhole(const std::string& bytes, bool big) {
    const auto unit = [&](std::size_t at) -> uint32_t {
        const auto first = static_cast<uint8_t>(bytes[at]);
        const auto second = static_cast<uint8_t>(bytes[at + 1]);
        return big ? first << 8 | second : second << 8 | first;
    };
    std::string text;
    std::size_t at = 0;
    for (; at + 2 <= bytes.size(); at += 2) {
        uint32_t c = unit(at);
        if (c >= 0xD800 && c <= 0xDFFF) {
            const bool high = c <= 0xDBFF && at + 4 <= bytes.size();
            const uint32_t low = high ? unit(at + 2) : 0;
            if (low < 0xDC00 || low > 0xDFFF) {
                return text + "!a UTF-16 surrogate without its partner";
            }
            c = 0x10000 + ((c - 0xD800) << 10 | (low - 0xDC00));
            at += 2;
        }
        reference::appendUtf8(text, c);
        if (c == 0) return text;
    }
    return at == bytes.size() ? text : text + "!the input ends within a UTF-16 unit";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool big = input.choice(2) == 1;
    const std::size_t chunk = input.byte(), atOnce = input.byte() + 1u;
    const std::size_t capacity = input.byte() + 1u;
    std::string bytes;
    while (!input.empty()) bytes += static_cast<char>(input.byte());
    FUZZ_EXPECT(convertInChunks(bytes, big, chunk, atOnce, capacity) == convertWhole(bytes, big));
    return 0;
}
