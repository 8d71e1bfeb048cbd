// Code pages: ISO 8859-1 and UTF-8 directly, all others through iconv.
#include "code_page.h"

#include "iconv_page.h"
#include "unicode.h"

namespace korv::datacnv {
namespace {

enum class Encoding { latin1, utf8, other };

Encoding encodingOf(const CnvOptions* options) noexcept {
    switch (options ? options->codePage : 819) {
        case 819:
        case 28591:
            return Encoding::latin1;
        case 1208:
        case 65001:
            return Encoding::utf8;
        default:
            return Encoding::other;
    }
}

CnvStatus widenLatin1(const uint8_t* source, uint32_t bytes, Output<wchar_t>& out) noexcept {
    if (bytes > out.room) return CNV_TARGET_TOO_SMALL;
    wchar_t* const target = out.units;
    for (uint32_t i = 0; i < bytes; ++i) target[i] = source[i];
    out.written = bytes;
    return CNV_SUCCESS;
}

CnvStatus widenUtf8(const uint8_t* at, uint32_t bytes, Output<wchar_t>& out) noexcept {
    const uint8_t* const end = at + bytes;
    while (at != end) {
        uint32_t c;
        at = decodeUtf8(at, end, c);
        if (!at) return CNV_MALFORMED_SOURCE;
        if (!out.put(static_cast<wchar_t>(c))) return CNV_TARGET_TOO_SMALL;
    }
    return CNV_SUCCESS;
}

CnvStatus narrowLatin1(const wchar_t* source, uint32_t characters, Output<char>& out) noexcept {
    for (uint32_t i = 0; i < characters; ++i) {
        const uint32_t c = codeOf(source[i]);
        if (c > 0xFF) return isCharacter(c) ? CNV_UNCONVERTIBLE : CNV_MALFORMED_SOURCE;
        if (!out.put(static_cast<char>(c))) return CNV_TARGET_TOO_SMALL;
    }
    return CNV_SUCCESS;
}

CnvStatus narrowUtf8(const wchar_t* source, uint32_t characters, Output<char>& out) noexcept {
    for (uint32_t i = 0; i < characters; ++i) {
        const uint32_t c = codeOf(source[i]);
        if (!isCharacter(c)) return CNV_MALFORMED_SOURCE;
        char bytes[4];
        const auto count = encodeUtf8(c, bytes);
        const CnvStatus status = out.append(bytes, count);
        if (status != CNV_SUCCESS) return status;
    }
    return CNV_SUCCESS;
}

}  // namespace

CnvStatus widen(const CnvOptions* options, const char* source, uint32_t bytes,
                Output<wchar_t>& out) noexcept {
    const uint8_t* const octets = reinterpret_cast<const uint8_t*>(source);
    switch (encodingOf(options)) {
        case Encoding::latin1:
            return widenLatin1(octets, bytes, out);
        case Encoding::utf8:
            return widenUtf8(octets, bytes, out);
        default:
            return widenByIconv(options->codePage, source, bytes, out);
    }
}

CnvStatus narrow(const CnvOptions* options, const wchar_t* source, uint32_t characters,
                 Output<char>& out) noexcept {
    switch (encodingOf(options)) {
        case Encoding::latin1:
            return narrowLatin1(source, characters, out);
        case Encoding::utf8:
            return narrowUtf8(source, characters, out);
        default:
            return narrowByIconv(options->codePage, source, characters, out);
    }
}

}  // namespace korv::datacnv
