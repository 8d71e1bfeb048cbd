// A reader of ELF files of both word sizes. Every access is checked: the file may be hostile.
#include "elf_file.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <system_error>

namespace kit {

namespace {

constexpr size_t kMostExports = 100000;
constexpr size_t kLongestText = 4096;
constexpr off_t kLargestFile = off_t{1} << 30;

struct Class32 {
    static constexpr int kBits = 32;
    static constexpr uint16_t kMachine = EM_386;
    using Header = Elf32_Ehdr;
    using Segment = Elf32_Phdr;
    using Dynamic = Elf32_Dyn;
    using Symbol = Elf32_Sym;
    using Word = Elf32_Addr;
};

struct Class64 {
    static constexpr int kBits = 64;
    static constexpr uint16_t kMachine = EM_X86_64;
    using Header = Elf64_Ehdr;
    using Segment = Elf64_Phdr;
    using Dynamic = Elf64_Dyn;
    using Symbol = Elf64_Sym;
    using Word = Elf64_Addr;
};

class Bytes {
  public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

    template <class Item>
    Item read(uint64_t offset) const {
        Item item;
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof item) fail();
        std::memcpy(&item, bytes_.data() + offset, sizeof item);
        return item;
    }

    std::string_view part(uint64_t offset, uint64_t length) const {
        if (offset > bytes_.size() || bytes_.size() - offset < length) fail();
        return bytes_.substr(static_cast<size_t>(offset), static_cast<size_t>(length));
    }

    std::string text(uint64_t offset) const {
        if (offset >= bytes_.size()) fail();
        const std::string_view rest = bytes_.substr(static_cast<size_t>(offset), kLongestText);
        const size_t end = rest.find('\0');
        if (end == std::string_view::npos) throw ElfFault("a name in it does not end");
        return std::string(rest.substr(0, end));
    }

  private:
    [[noreturn]] static void fail() { throw ElfFault("it refers to places beyond its end"); }

    std::string_view bytes_;
};

template <class Class>
class Reader {
  public:
    explicit Reader(std::string_view bytes)
        : bytes_(bytes), header_(bytes_.read<typename Class::Header>(0)) {}

    ElfFile read() {
        file_.bits = Class::kBits;
        file_.isX86 = header_.e_machine == Class::kMachine;
        file_.isShared = header_.e_type == ET_DYN;
        file_.hasExecutableStack = true;  // what the kernel takes for granted without a segment
        readSegments();
        for (const auto& segment : segments_) {
            if (segment.p_type == PT_DYNAMIC) readDynamic(segment);
            if (segment.p_type == PT_NOTE) readNotes(segment);
        }
        return file_;
    }

  private:
    using Segment = typename Class::Segment;
    using Symbol = typename Class::Symbol;
    using Word = typename Class::Word;

    void readSegments() {
        if (header_.e_phentsize != sizeof(Segment) && header_.e_phnum > 0) {
            throw ElfFault("its program headers have another size than such headers have");
        }
        for (unsigned i = 0; i < header_.e_phnum; ++i) {
            const auto segment =
                bytes_.read<Segment>(uint64_t{header_.e_phoff} + i * sizeof(Segment));
            segments_.push_back(segment);
            if (segment.p_type == PT_GNU_STACK) {
                file_.hasExecutableStack = (segment.p_flags & PF_X) != 0;
            }
        }
    }

    // Where in the file the bytes are that have this address.
    uint64_t offsetOf(uint64_t address) const {
        for (const Segment& segment : segments_) {
            if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
                address - segment.p_vaddr < segment.p_filesz) {
                return segment.p_offset + (address - segment.p_vaddr);
            }
        }
        throw ElfFault("it refers to addresses that it does not load");
    }

    void readDynamic(const Segment& segment) {
        using Dynamic = typename Class::Dynamic;
        std::vector<uint64_t> needed;
        std::optional<uint64_t> name, rpath, runpath;
        for (uint64_t at = 0; at + sizeof(Dynamic) <= segment.p_filesz; at += sizeof(Dynamic)) {
            const auto entry = bytes_.read<Dynamic>(segment.p_offset + at);
            const uint64_t value = entry.d_un.d_val;
            switch (entry.d_tag) {
                case DT_NULL:
                    at = segment.p_filesz - sizeof(Dynamic);
                    break;
                case DT_NEEDED:
                    needed.push_back(value);
                    break;
                case DT_SONAME:
                    name = value;
                    break;
                case DT_RPATH:
                    rpath = value;
                    break;
                case DT_RUNPATH:
                    runpath = value;
                    break;
                case DT_STRTAB:
                    texts_ = value;
                    break;
                case DT_SYMTAB:
                    symbols_ = value;
                    break;
                case DT_HASH:
                    hash_ = value;
                    break;
                case DT_GNU_HASH:
                    gnuHash_ = value;
                    break;
                case DT_TEXTREL:
                    file_.hasTextRelocations = true;
                    break;
                case DT_BIND_NOW:
                    file_.isBoundAtStart = true;
                    break;
                case DT_FLAGS:
                    if ((value & DF_TEXTREL) != 0) file_.hasTextRelocations = true;
                    if ((value & DF_BIND_NOW) != 0) file_.isBoundAtStart = true;
                    break;
                case DT_FLAGS_1:
                    if ((value & DF_1_PIE) != 0) file_.isShared = false;
                    if ((value & DF_1_NOW) != 0) file_.isBoundAtStart = true;
                    break;
                default:
                    break;
            }
        }
        for (const uint64_t offset : needed) file_.needed.push_back(textAt(offset));
        if (name) file_.name = textAt(*name);
        if (rpath) file_.searchPath = textAt(*rpath);
        if (runpath) file_.searchPath = textAt(*runpath);
        readExports();
    }

    std::string textAt(uint64_t offset) const {
        return texts_ ? bytes_.text(offsetOf(*texts_) + offset) : "";
    }

    void readExports() {
        if (!symbols_ || !texts_) return;
        const uint64_t first = offsetOf(*symbols_);
        const uint64_t count = symbolCount();
        if (count > kMostExports) throw ElfFault("it has too many symbols");
        std::set<std::string> names;
        for (uint64_t i = 1; i < count; ++i) {
            const auto symbol = bytes_.read<Symbol>(first + i * sizeof(Symbol));
            const int binding = symbol.st_info >> 4;
            const bool isVisible =
                binding == STB_GLOBAL || binding == STB_WEAK || binding == STB_GNU_UNIQUE;
            // A version's name is an absolute symbol of its own.
            if (symbol.st_shndx == SHN_UNDEF || symbol.st_shndx == SHN_ABS || !isVisible) continue;
            names.insert(textAt(symbol.st_name));
        }
        file_.exports.assign(names.begin(), names.end());
    }

    // Sections, which would say it directly, may be missing: the loader does not need them.
    uint64_t symbolCount() const {
        if (hash_) return bytes_.read<uint32_t>(offsetOf(*hash_) + 4);
        if (!gnuHash_) return 0;
        const uint64_t table = offsetOf(*gnuHash_);
        const auto buckets = bytes_.read<uint32_t>(table);
        const auto firstHashed = bytes_.read<uint32_t>(table + 4);
        const auto filterWords = bytes_.read<uint32_t>(table + 8);
        const uint64_t bucketsAt = table + 16 + uint64_t{filterWords} * sizeof(Word);
        const uint64_t chainsAt = bucketsAt + uint64_t{buckets} * 4;
        uint32_t last = 0;
        for (uint32_t i = 0; i < buckets; ++i) {
            last = std::max(last, bytes_.read<uint32_t>(bucketsAt + uint64_t{i} * 4));
        }
        if (last < firstHashed) return firstHashed;
        // A chain ends at a hash whose lowest bit is set.
        while ((bytes_.read<uint32_t>(chainsAt + uint64_t{last - firstHashed} * 4) & 1) == 0) {
            if (++last > kMostExports) break;
        }
        return uint64_t{last} + 1;
    }

    void readNotes(const Segment& segment) {
        constexpr auto padded = [](uint64_t size) { return (size + 3) / 4 * 4; };
        uint64_t at = segment.p_offset;
        uint64_t left = segment.p_filesz;
        while (left >= sizeof(Elf32_Nhdr)) {
            const auto note = bytes_.read<Elf32_Nhdr>(at);
            const uint64_t size = sizeof note + padded(note.n_namesz) + padded(note.n_descsz);
            if (size > left) return;
            if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4 &&
                bytes_.part(at + sizeof note, 4) == std::string_view("GNU\0", 4)) {
                setBuildId(bytes_.part(at + sizeof note + 4, note.n_descsz));
            }
            at += size;
            left -= size;
        }
    }

    void setBuildId(std::string_view id) {
        constexpr size_t kLongest = 64;
        file_.buildId.clear();
        for (const char c : id.substr(0, kLongest)) {
            constexpr char kDigits[] = "0123456789abcdef";
            file_.buildId += kDigits[static_cast<unsigned char>(c) / 16];
            file_.buildId += kDigits[static_cast<unsigned char>(c) % 16];
        }
    }

    Bytes bytes_;
    typename Class::Header header_;
    ElfFile file_;
    std::vector<Segment> segments_;
    std::optional<uint64_t> texts_, symbols_, hash_, gnuHash_;
};

[[noreturn]] void failSystem(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), path);
}

struct Descriptor {
    explicit Descriptor(const std::string& path)
        : number(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (number < 0) failSystem(path);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { ::close(number); }
    int number;
};

}  // namespace

ElfFile readElf(std::string_view bytes) {
    if (bytes.size() < EI_NIDENT || bytes.substr(0, SELFMAG) != ELFMAG) {
        throw ElfFault("it is not an ELF file");
    }
    if (bytes[EI_DATA] != ELFDATA2LSB) throw ElfFault("it is not for x86");
    if (bytes[EI_CLASS] == ELFCLASS32) return Reader<Class32>(bytes).read();
    if (bytes[EI_CLASS] == ELFCLASS64) return Reader<Class64>(bytes).read();
    throw ElfFault("it has an unknown word size");
}

ElfFile readElfFile(const std::string& path) {
    const Descriptor file(path);
    struct stat status;
    if (::fstat(file.number, &status) != 0) failSystem(path);
    if (!S_ISREG(status.st_mode)) throw ElfFault("it is not a regular file");
    if (status.st_size > kLargestFile) throw ElfFault("it is too large");
    // A copy, because a mapped file could be cut off while it is read.
    std::string bytes(static_cast<size_t>(status.st_size), '\0');
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::read(file.number, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) failSystem(path);
        if (count == 0) break;
        done += static_cast<size_t>(count);
    }
    bytes.resize(done);
    return readElf(bytes);
}

}  // namespace kit
