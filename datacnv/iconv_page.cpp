// Code pages that the system's iconv converts, found by the number in their name.
#include "iconv_page.h"

#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <initializer_list>

#include "unicode.h"

namespace korv::datacnv {
namespace {

// Numbers that stand in no name of iconv's. Units of several bytes have no byte order mark.
constexpr struct {
    uint32_t number;
    const char* name;
} kNamed[] = {
    {367, "US-ASCII"},   {1200, "UTF-16LE"},  {1201, "UTF-16BE"},
    {1392, "GB18030"},   {12000, "UTF-32LE"}, {12001, "UTF-32BE"},
    {20127, "US-ASCII"}, {51932, "EUC-JP"},   {54936, "GB18030"},
};

const iconv_t kNone = reinterpret_cast<iconv_t>(-1);

// One conversion descriptor, from or to wide text.
class Converter {
  public:
    Converter(uint32_t codePage, bool toWide) noexcept {
        for (const auto& named : kNamed) {
            if (named.number == codePage) {
                open(named.name, toWide);
                return;
            }
        }
        if (codePage > 28591 && codePage <= 28605) {
            openNumbered("ISO-8859-%u", codePage - 28590, toWide);
            return;
        }
        for (const char* pattern : {"CP%u", "IBM%u", "IBM%03u"}) {
            if (openNumbered(pattern, codePage, toWide)) return;
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (descriptor_ != kNone) iconv_close(descriptor_);
    }

    CnvStatus opened() const noexcept {
        if (descriptor_ != kNone) return CNV_SUCCESS;
        return error_ == EINVAL ? CNV_UNKNOWN_CODE_PAGE : CNV_NO_MEMORY;
    }

    // Converts `bytes` of source, or with a null source ends the text: what the converter held back
    // comes out, and a shift state returns to its start. `refused` is the status of text that the
    // converter does not take. iconv wants room even for what produces nothing, such as a shift, so
    // it is lent the place of the terminator.
    template <class Unit>
    CnvStatus run(const void* source, std::size_t bytes, Output<Unit>& out,
                  CnvStatus refused) noexcept {
        char* from = const_cast<char*>(static_cast<const char*>(source));
        char* to = reinterpret_cast<char*>(out.units + out.written);
        std::size_t room = static_cast<std::size_t>(out.room + 1 - out.written) * sizeof(Unit);
        const std::size_t before = room;
        const std::size_t result = iconv(descriptor_, source ? &from : nullptr, &bytes, &to, &room);
        out.written += static_cast<uint32_t>((before - room) / sizeof(Unit));
        if (out.written > out.room) return CNV_TARGET_TOO_SMALL;
        if (result != static_cast<std::size_t>(-1)) return result == 0 ? CNV_SUCCESS : refused;
        return errno == E2BIG ? CNV_TARGET_TOO_SMALL : refused;
    }

  private:
    bool open(const char* name, bool toWide) noexcept {
        descriptor_ = toWide ? iconv_open("WCHAR_T", name) : iconv_open(name, "WCHAR_T");
        error_ = errno;
        return descriptor_ != kNone;
    }

    bool openNumbered(const char* pattern, uint32_t number, bool toWide) noexcept {
        char name[24];
        std::snprintf(name, sizeof name, pattern, static_cast<unsigned>(number));
        return open(name, toWide);
    }

    iconv_t descriptor_ = kNone;
    int error_ = EINVAL;
};

// iconv drops tag characters in silence where a code page lacks them.
bool isTag(wchar_t unit) noexcept {
    return unit >= 0xE0000 && unit <= 0xE007F;
}

}  // namespace

CnvStatus widenByIconv(uint32_t codePage, const char* source, uint32_t bytes,
                       Output<wchar_t>& out) noexcept {
    Converter converter(codePage, true);
    CnvStatus status = converter.opened();
    if (status == CNV_SUCCESS && bytes > 0) {
        status = converter.run(source, bytes, out, CNV_MALFORMED_SOURCE);
    }
    if (status == CNV_SUCCESS) status = converter.run(nullptr, 0, out, CNV_MALFORMED_SOURCE);
    return status;
}

CnvStatus narrowByIconv(uint32_t codePage, const wchar_t* source, uint32_t characters,
                        Output<char>& out) noexcept {
    Converter converter(codePage, false);
    CnvStatus status = converter.opened();
    const wchar_t* const end = source + characters;
    for (const wchar_t* run = source; run != end && status == CNV_SUCCESS;) {
        // A run of what the converter judges by itself, or one tag.
        const wchar_t* next = run;
        while (next != end && isCharacter(codeOf(*next)) && !isTag(*next)) ++next;
        const bool tag = next == run && isTag(*next);
        if (tag) ++next;
        if (next == run) return CNV_MALFORMED_SOURCE;
        const uint32_t before = out.written;
        const auto bytes = static_cast<std::size_t>(next - run) * sizeof(wchar_t);
        status = converter.run(run, bytes, out, CNV_UNCONVERTIBLE);
        if (tag && status == CNV_SUCCESS && out.written == before) status = CNV_UNCONVERTIBLE;
        run = next;
    }
    if (status == CNV_SUCCESS) status = converter.run(nullptr, 0, out, CNV_UNCONVERTIBLE);
    return status;
}

}  // namespace korv::datacnv
