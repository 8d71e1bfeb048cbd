/** @file
 * Comfort in C++17 or later on top of the C interface: owners, ranges over the records' lists, and
 * status codes with names.
 *
 * It adds nothing at run time over the calls by hand and hides none of them: every owner gives its
 * pointer away by get() and release(). Nothing here throws.
 *
 * @code
 * korv::Owner<ErrorAnchor> errors = korv::make<ErrorAnchor>();
 * request.errorAnchor = errors.get();
 * korv::Owner<CtrlBlkX> block = korv::make<CtrlBlkX>();
 * if (!korv::succeeded(KORVCnvCtrlBlkFromIToX(&request, block.get()))) std::abort();
 * for (const FieldDefX& field : korv::fields(*block)) std::puts(KORVGetDataTypeName(field.dataType));
 * @endcode
 *
 * An owner holds what the heap of the process holds, and is empty after a move. */
#ifndef KORV_KORV_HPP
#define KORV_KORV_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "korv/datacnv.h"
#include "korv/korv.h"

#if __cplusplus < 201703L
#error "korv/korv.hpp needs C++17; korv/korv.h does with C++11"
#endif

/** The C++ face of the library. */
namespace korv {

/* ---- Status ---------------------------------------------------------------------------------- */

/** @cond */
/* X(enumerator, constant) for every status of the library and of the companion's stand-in. */
#define KORV_STATUSES(X) \
    X(failure, KORV_FAILURE) X(success, KORV_SUCCESS) X(tokenBadId, KORV_TOKEN_BAD_ID) \
    X(tokenNoSlot, KORV_TOKEN_NO_SLOT) X(tokenBadType, KORV_TOKEN_BAD_TYPE) \
    X(typeNoField, KORV_TYPE_NO_FIELD) X(typeUnknown, KORV_TYPE_UNKNOWN) \
    X(typeVariable, KORV_TYPE_VARIABLE) X(typeDatetime, KORV_TYPE_DATETIME) \
    X(noMemoryWideValue, KORV_NO_MEMORY_WIDE_VALUE) X(badValueLength, KORV_BAD_VALUE_LENGTH) \
    X(badTextLength, KORV_BAD_TEXT_LENGTH) X(noMemoryWideText, KORV_NO_MEMORY_WIDE_TEXT) \
    X(noMemoryNarrowText, KORV_NO_MEMORY_NARROW_TEXT) \
    X(noMemoryNarrowValue, KORV_NO_MEMORY_NARROW_VALUE) X(noMemoryField, KORV_NO_MEMORY_FIELD) \
    X(noMemoryReference, KORV_NO_MEMORY_REFERENCE) X(noMemoryOperand, KORV_NO_MEMORY_OPERAND) \
    X(noMemoryBuffer, KORV_NO_MEMORY_BUFFER) X(badBufferSize, KORV_BAD_BUFFER_SIZE) \
    X(targetTooSmall, CNV_TARGET_TOO_SMALL) X(malformedSource, CNV_MALFORMED_SOURCE) \
    X(unconvertible, CNV_UNCONVERTIBLE) X(unknownCodePage, CNV_UNKNOWN_CODE_PAGE) \
    X(badLength, CNV_BAD_LENGTH) X(noMemory, CNV_NO_MEMORY)
/** @endcond */

/** A result as an enumeration, made by Status(result). The enumerators are named as the constants
 * of KorvStatus and CnvStatus without their prefix: KORV_NO_MEMORY_FIELD is noMemoryField. Another
 * companion's codes are kept as numbers. */
enum class Status : int32_t {
/** @cond */
#define KORV_STATUS_CONSTANT(name, constant) name = (constant),
    KORV_STATUSES(KORV_STATUS_CONSTANT)
#undef KORV_STATUS_CONSTANT
/** @endcond */
};

/** The name of a status in the C interface.
 *
 * @param status  any value
 * @return the constant's name, as "KORV_NO_MEMORY_FIELD"; "unknown status" for other values. A
 *         constant text */
constexpr const char* to_string(Status status) noexcept {
    switch (status) {
/** @cond */
#define KORV_STATUS_NAME(name, constant) \
    case Status::name: \
        return #constant;
        KORV_STATUSES(KORV_STATUS_NAME)
#undef KORV_STATUS_NAME
    /** @endcond */
    }
    return "unknown status";
}
#undef KORV_STATUSES

/** Whether a status means success. Two do: 0, and 65 of GetDataTypeLengths.
 *
 * @param status  any value
 * @return true for success */
constexpr bool succeeded(Status status) noexcept {
    return status == Status::success || status == Status::typeDatetime;
}
/** Whether a result means success, as succeeded(Status) says.
 *
 * @param result  what a function of the C interface has returned
 * @return true for success */
constexpr bool succeeded(int32_t result) noexcept { return succeeded(Status(result)); }

/* ---- Owners ---------------------------------------------------------------------------------- */

/** Releases what it is handed by the function that the C interface names for it. */
struct Release {
    /** @cond */
    void operator()(CtrlBlkX* block) const noexcept { CleanCtrlBlkX(block); }
    void operator()(SvcDefX* service) const noexcept { CleanSvcDefX(service); }
    void operator()(OprDefX* first) const noexcept { CleanParamsX(first); }
    void operator()(ErrorAnchor* anchor) const noexcept { TermErrors(anchor); }
    void operator()(char* text) const noexcept { std::free(text); }
    void operator()(wchar_t* text) const noexcept { std::free(text); }
    void operator()(uint16_t* units) const noexcept { std::free(units); }
    template <class Record>
    void operator()(Record*) const = delete; /* part of another record, or not the library's */
    /** @endcond */
};

/** Owner of a CtrlBlkX with its lists, a SvcDefX with its operands, a list of OprDefX, an
 * ErrorAnchor with its chain, or a text: char, wchar_t, uint16_t. */
template <class T>
using Owner = std::unique_ptr<T, Release>;

/** A zeroed record, as the C interface wants it to begin with.
 *
 * @tparam Record  what Owner can own
 * @return the owner; empty when there is no memory */
template <class Record>
Owner<Record> make() noexcept {
    return Owner<Record>(static_cast<Record*>(std::calloc(1, sizeof(Record))));
}

/** The units of KORVGetXMLCHARFromWCHAR in a block of its own.
 *
 * @param      text   text of wide characters with a terminator
 * @param[out] units  takes the block, and frees its former one; empty on failure
 * @return what KORVGetXMLCHARFromWCHAR returns */
inline int32_t narrowedUnits(const wchar_t* text, Owner<uint16_t>& units) noexcept {
    uint16_t* block = nullptr;
    const int32_t result = KORVGetXMLCHARFromWCHAR(text, &block, 1);
    units.reset(block);
    return result;
}

/** A record with the blocks that it owns: texts, a buffer. It must stay where it is while it is
 * linked in a list.
 *
 * @tparam Record  a record of the C interface
 * @tparam blocks  its members that point to blocks of the heap */
template <class Record, auto... blocks>
class Holder {
  public:
    /** A zeroed record. */
    Holder() noexcept = default;
    /** Takes over the record's blocks.
     *
     * @param record  copied */
    explicit Holder(const Record& record) noexcept : record_(record) {}
    /** @cond */
    Holder(Holder&& other) noexcept : record_(other.release()) {}
    Holder& operator=(Holder&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~Holder() { (std::free(record_.*blocks), ...); }
    /** @endcond */

    /** @return the record, which stays the holder's */
    Record* get() noexcept { return &record_; }
    /** @cond */
    Record* operator->() noexcept { return &record_; }
    const Record* operator->() const noexcept { return &record_; }
    Record& operator*() noexcept { return record_; }
    const Record& operator*() const noexcept { return record_; }
    /** @endcond */

    /** @return the record with its blocks, which are the caller's from now on; zeroes are left */
    Record release() noexcept { return std::exchange(record_, Record{}); }
    /** Frees the blocks and takes over others.
     *
     * @param record  copied */
    void reset(const Record& record = Record{}) noexcept {
        const Record old = std::exchange(record_, record);
        (std::free(old.*blocks), ...);
    }

  private:
    Record record_{};
};

/** For the copies of DuplicateFieldDefI and CopyFieldStruct. */
using FieldWithTexts = Holder<FieldDefI, &FieldDefI::wideText, &FieldDefI::narrowText>;
/** For the copies of CopyParamsStruct. */
using OperandWithTexts =
    Holder<OprDefI, &OprDefI::oprText, &OprDefI::wideValue, &OprDefI::narrowValue>;

/** What KORVAllocateBuffer works on. */
struct WorkBuffer {
    void* data;    /**< the block, or null */
    uint32_t size; /**< its bytes */
};

/** Buffer of KORVAllocateBuffer. When memory runs out it is empty, and its block freed. */
class Buffer : public Holder<WorkBuffer, &WorkBuffer::data> {
  public:
    using Holder::Holder;
    /** Any size, all bytes zero.
     *
     * @param size  bytes
     * @return what KORVAllocateBuffer returns */
    Status resize(int32_t size) noexcept {
        void* const old = get()->data;
        return settle(old, KORVAllocateBuffer(&get()->data, &get()->size, size));
    }
    /** A larger size: the bytes so far stay, the new ones are zero.
     *
     * @param size  bytes
     * @return what KORVAllocateBuffer1 returns */
    Status grow(int32_t size) noexcept {
        void* const old = get()->data;
        return settle(old, KORVAllocateBuffer1(&get()->data, &get()->size, size, 1));
    }

  private:
    Status settle(void* old, int32_t result) noexcept {
        if (result == KORV_NO_MEMORY_BUFFER) {
            std::free(old); /* the library has given it up */
            get()->size = 0;
        }
        return Status(result);
    }
};

/* ---- Ranges ---------------------------------------------------------------------------------- */

/** The record behind another one in its list.
 *
 * @param record  a record with a link
 * @return its neighbour; null at the end */
template <class Record>
Record* successor(Record& record) noexcept {
    if constexpr (std::is_same_v<std::remove_const_t<Record>, ErrorRecord>) {
        return record.next;
    } else {
        return record.link;
    }
}

/** A list from its first record on. It owns nothing. A step reads the record that it leaves. */
template <class Record>
class List {
  public:
    /** @cond */
    class iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = std::remove_const_t<Record>;
        using difference_type = std::ptrdiff_t;
        using pointer = Record*;
        using reference = Record&;

        explicit iterator(Record* record = nullptr) noexcept : record_(record) {}
        Record& operator*() const noexcept { return *record_; }
        Record* operator->() const noexcept { return record_; }
        iterator& operator++() noexcept {
            record_ = successor(*record_);
            return *this;
        }
        iterator operator++(int) noexcept {
            const iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(iterator a, iterator b) noexcept { return a.record_ == b.record_; }
        friend bool operator!=(iterator a, iterator b) noexcept { return a.record_ != b.record_; }

      private:
        Record* record_;
    };

    /** @endcond */

    /** @param first  the first record, or null */
    explicit List(Record* first) noexcept : first_(first) {}
    /** @return the first record's place */
    iterator begin() const noexcept { return iterator(first_); }
    /** @return the place behind the last record */
    iterator end() const noexcept { return iterator(); }

  private:
    Record* first_;
};

/** Records side by side. It owns nothing. */
template <class T>
class Row {
  public:
    /** @param first  the first record
     * @param size   records */
    Row(T* first, std::size_t size) noexcept : first_(first), size_(size) {}
    /** @return the first record */
    T* begin() const noexcept { return first_; }
    /** @return the place behind the last record */
    T* end() const noexcept { return first_ + size_; }
    /** @return records */
    std::size_t size() const noexcept { return size_; }
    /** @param index  from 0, below size()
     * @return the record there */
    T& operator[](std::size_t index) const noexcept { return first_[index]; }

  private:
    T* first_;
    std::size_t size_;
};

/** The field definitions of a CtrlBlkI, CtrlBlkX or SvcDefX.
 *
 * @param block  holds the list
 * @return the list */
template <class Block>
auto fields(const Block& block) noexcept {
    return List(block.fieldDefs);
}

/** The field references of a CtrlBlkI or CtrlBlkX: the embedded one and those behind it.
 *
 * @param block  holds the list
 * @return the list */
template <class Block>
auto references(Block& block) noexcept {
    return List(&block.fieldRefs);
}

/** The field that a reference picks out of its block's list. It goes by position:
 * FieldRefX::fieldDef is not empty there, and FieldRefI::fieldDef need not be set.
 *
 * @param block      a CtrlBlkI or CtrlBlkX
 * @param reference  one of its references
 * @return the field; null when the list is shorter */
template <class Block, class Reference>
auto pickedField(const Block& block, const Reference& reference) noexcept {
    auto* field = block.fieldDefs;
    for (auto steps = static_cast<int16_t>(reference.fieldPos); steps > 0 && field; --steps) {
        field = field->link;
    }
    return field;
}

/** The operands of a SvcDefI or SvcDefX.
 *
 * @param service  holds the list
 * @return the list */
template <class Service>
auto operands(const Service& service) noexcept {
    return List(service.oprDefs);
}

/** The errors of a request, from the oldest on.
 *
 * @param anchor  holds the list
 * @return the list */
inline List<ErrorRecord> errors(const ErrorAnchor& anchor) noexcept {
    return List(anchor.head);
}

/** The token slots of an ErrorRecord, unused ones (tokenId 0) included, the spare one not.
 *
 * @param record  an error
 * @return its slots */
template <class Record>
auto tokens(Record& record) noexcept {
    const int16_t count = record.tokenSlotCount;
    return Row(&record.tokenSlots[0], static_cast<std::size_t>(count > 0 ? count : 0));
}

}  // namespace korv

#endif
