/** @file
 * C++17 convenience on top of the C interface: owners, requests, ranges, text views, a builder for
 * errors, and status codes with names.
 *
 * It costs no more at run time than the same calls written by hand, and hides none of them: every
 * owner of a record or text returns its pointer from get() and gives it up with release(). Nothing
 * here throws.
 *
 * @code
 * SvcDefI service = {};
 * korv::Request converted;
 * const korv::Status status = korv::Request::convert(request, service, converted);
 * if (!korv::succeeded(status)) std::puts(korv::to_string(status));
 * if (converted.block()) {
 *     for (const FieldDefX& field : korv::fields(*converted.block())) {
 *         std::printf("%s of %u\n", KORVGetDataTypeName(field.dataType), unsigned(field.length));
 *     }
 * }
 * @endcode
 *
 * The functions of the companion library are declared in korv/datacnv.h. Include it yourself if you
 * call them.
 *
 * @since 1.0 */
#ifndef KORV_KORV_HPP
#define KORV_KORV_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#if __cplusplus >= 202002L
#include <version>
#endif

#include "korv/korv.h"

#if __cplusplus < 201703L
#error "korv/korv.hpp needs C++17; korv/korv.h works with C++11"
#endif

/** The C++ interface of the library. */
namespace korv {

/* ---- Status ---------------------------------------------------------------------------------- */

/** @cond */
/* It takes lists of macros for one expression. */
/* clang-format off */
/* X(enumerator, constant) for every status of the library. */
#define KORV_LIBRARY_STATUSES(X) \
    X(failure, KORV_FAILURE) X(success, KORV_SUCCESS) X(tokenBadId, KORV_TOKEN_BAD_ID) \
    X(tokenNoSlot, KORV_TOKEN_NO_SLOT) X(tokenBadType, KORV_TOKEN_BAD_TYPE) \
    X(typeNoField, KORV_TYPE_NO_FIELD) X(typeUnknown, KORV_TYPE_UNKNOWN) \
    X(typeVariable, KORV_TYPE_VARIABLE) X(typeDatetime, KORV_TYPE_DATETIME) \
    X(noMemoryWideValue, KORV_NO_MEMORY_WIDE_VALUE) X(badValueLength, KORV_BAD_VALUE_LENGTH) \
    X(badTextLength, KORV_BAD_TEXT_LENGTH) X(noMemoryWideText, KORV_NO_MEMORY_WIDE_TEXT) \
    X(noMemoryNarrowText, KORV_NO_MEMORY_NARROW_TEXT) \
    X(noMemoryNarrowValue, KORV_NO_MEMORY_NARROW_VALUE) X(noMemoryField, KORV_NO_MEMORY_FIELD) \
    X(noMemoryReference, KORV_NO_MEMORY_REFERENCE) X(noMemoryOperand, KORV_NO_MEMORY_OPERAND) \
    X(noMemoryBuffer, KORV_NO_MEMORY_BUFFER) X(badBufferSize, KORV_BAD_BUFFER_SIZE)
/* X(enumerator, constant, number) for the statuses of the companion library built here. The numbers
 * stand here so that korv/datacnv.h is not needed; a test compares them. */
#define KORV_COMPANION_STATUSES(X) \
    X(targetTooSmall, CNV_TARGET_TOO_SMALL, 201) X(malformedSource, CNV_MALFORMED_SOURCE, 202) \
    X(unconvertible, CNV_UNCONVERTIBLE, 203) X(unknownCodePage, CNV_UNKNOWN_CODE_PAGE, 204) \
    X(badLength, CNV_BAD_LENGTH, 205) X(noMemory, CNV_NO_MEMORY, 206)
/** @endcond */

/** The status that a function of the C interface returns, as an enumeration: Status(result). The
 * enumerators are the constants of KorvStatus and CnvStatus without their prefix:
 * KORV_NO_MEMORY_FIELD is noMemoryField. Every other number, such as a code of another companion
 * library, is kept. */
enum class [[nodiscard]] Status : int32_t {
/** @cond */
#define KORV_STATUS_CONSTANT(name, constant) name = (constant),
#define KORV_STATUS_NUMBER(name, constant, number) name = (number),
    KORV_LIBRARY_STATUSES(KORV_STATUS_CONSTANT)
    KORV_COMPANION_STATUSES(KORV_STATUS_NUMBER)
#undef KORV_STATUS_CONSTANT
#undef KORV_STATUS_NUMBER
/** @endcond */
};

/** The name of a status in the C interface.
 *
 * @param status  any value
 * @return the constant's name, such as "KORV_NO_MEMORY_FIELD", or "unknown status". The text is
 *         constant */
[[nodiscard]] constexpr const char* to_string(Status status) noexcept {
    switch (status) {
/** @cond */
#define KORV_STATUS_NAME(name, constant) \
    case Status::name: \
        return #constant;
#define KORV_COMPANION_STATUS_NAME(name, constant, number) KORV_STATUS_NAME(name, constant)
        KORV_LIBRARY_STATUSES(KORV_STATUS_NAME)
        KORV_COMPANION_STATUSES(KORV_COMPANION_STATUS_NAME)
#undef KORV_COMPANION_STATUS_NAME
#undef KORV_STATUS_NAME
    /** @endcond */
    }
    return "unknown status";
}
#undef KORV_LIBRARY_STATUSES
#undef KORV_COMPANION_STATUSES
/* clang-format on */

/** Whether a status means success. Two do: 0, and 65, which GetDataTypeLengths returns for a date
 * and time held as text.
 *
 * A number is not accepted, because not every result is a status: KORV_GetNextElement,
 * GetProviderID and the comparisons return other things. Write succeeded(Status(result)).
 *
 * @param status  any value
 * @return true for success */
[[nodiscard]] constexpr bool succeeded(Status status) noexcept {
    return status == Status::success || status == Status::typeDatetime;
}

/* ---- Text views ------------------------------------------------------------------------------ */

/** A view of a narrow text of a record, such as FieldDefI::narrowText. OprDef::narrowValue is valid
 * only if the value kind is OPR_VALUE_NARROW.
 *
 * @param text  zero-terminated text, or NULL
 * @return its characters without the terminator; an empty view for NULL. It is valid as long as the
 *         text is */
[[nodiscard]] constexpr std::string_view view(const char* text) noexcept {
    return text ? std::string_view(text) : std::string_view();
}
/** A view of a wide text of a record, such as FieldDefX::wideText, OprDef::oprText or
 * TokenSlot::text. OprDef::wideValue is valid only if the value kind is OPR_VALUE_WIDE or
 * OPR_VALUE_NARROW.
 *
 * @param text  zero-terminated text, or NULL
 * @return its characters without the terminator; an empty view for NULL. It is valid as long as the
 *         text is */
[[nodiscard]] constexpr std::wstring_view view(const wchar_t* text) noexcept {
    return text ? std::wstring_view(text) : std::wstring_view();
}

/* ---- Owners ---------------------------------------------------------------------------------- */

/** Releases a block with the function that the C interface provides for it. */
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

/** Owner of one of these:
 * - a CtrlBlkX with its lists, a SvcDefX with its operands, or a list of OprDefX;
 * - an ErrorAnchor with its chain;
 * - a text of char, wchar_t or uint16_t.
 *
 * It is NULL after a move. */
template <class T>
using Owner = std::unique_ptr<T, Release>;

/** Allocates a record of zeros, the state in which the C interface expects a new record.
 *
 * @tparam Record  a type that Owner can own
 * @return the owner; NULL when there is no memory */
template <class Record>
[[nodiscard]] Owner<Record> make() noexcept {
    return Owner<Record>(static_cast<Record*>(std::calloc(1, sizeof(Record))));
}

/** Calls KORVGetXMLCHARFromWCHAR with a newly allocated result.
 *
 * @param      text   zero-terminated wide text
 * @param[out] units  owns the result; what it owned before is freed. NULL on failure
 * @return the status of KORVGetXMLCHARFromWCHAR */
[[nodiscard]] inline Status narrowedUnits(const wchar_t* text, Owner<uint16_t>& units) noexcept {
    uint16_t* block = nullptr;
    const Status status{KORVGetXMLCHARFromWCHAR(text, &block, 1)};
    units.reset(block);
    return status;
}

/** A record together with the texts or the buffer that its members point to. The record must stay
 * where it is while it is linked in a list.
 *
 * @tparam Record  a record of the C interface
 * @tparam blocks  its members that point to blocks of the heap */
template <class Record, auto... blocks>
class [[nodiscard]] Holder {
  public:
    /** Makes a record of zeros. */
    Holder() noexcept = default;
    /** Takes ownership of a record's blocks.
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

    /** @return the record, which stays owned */
    [[nodiscard]] Record* get() noexcept { return &record_; }
    /** @return the record, which stays owned */
    [[nodiscard]] const Record* get() const noexcept { return &record_; }
    /** @cond */
    Record* operator->() noexcept { return &record_; }
    const Record* operator->() const noexcept { return &record_; }
    Record& operator*() noexcept { return record_; }
    const Record& operator*() const noexcept { return record_; }
    /** @endcond */

    /** Gives up ownership and leaves a record of zeros.
     *
     * @return the record; the caller frees its blocks */
    [[nodiscard]] Record release() noexcept { return std::exchange(record_, Record{}); }
    /** Frees the blocks and takes ownership of those of another record.
     *
     * @param record  copied */
    void reset(const Record& record = Record{}) noexcept {
        const Record old = std::exchange(record_, record);
        (std::free(old.*blocks), ...);
    }

  private:
    Record record_{};
};

/** For the copies that DuplicateFieldDefI and CopyFieldStruct make. */
using FieldWithTexts = Holder<FieldDefI, &FieldDefI::wideText, &FieldDefI::narrowText>;
/** For the copies that CopyParamsStruct makes. */
using OperandWithTexts =
    Holder<OprDefI, &OprDefI::oprText, &OprDefI::wideValue, &OprDefI::narrowValue>;

/** The pointer and the size that KORVAllocateBuffer works on. */
struct WorkBuffer {
    void* data;    /**< the block, or NULL */
    uint32_t size; /**< its size in bytes */
};

/** A buffer of KORVAllocateBuffer. When an allocation fails, the old block is freed and the buffer
 * has no block. */
class [[nodiscard]] Buffer : public Holder<WorkBuffer, &WorkBuffer::data> {
  public:
    using Holder::Holder;
    /** Changes the size and sets all bytes to zero.
     *
     * @param size  bytes
     * @return the status of KORVAllocateBuffer */
    Status resize(int32_t size) noexcept {
        void* const old = get()->data;
        return settle(old, KORVAllocateBuffer(&get()->data, &get()->size, size));
    }
    /** Makes the buffer larger. It keeps its bytes; the new ones are zero.
     *
     * @param size  bytes
     * @return the status of KORVAllocateBuffer1 */
    Status grow(int32_t size) noexcept {
        void* const old = get()->data;
        return settle(old, KORVAllocateBuffer1(&get()->data, &get()->size, size, 1));
    }

  private:
    Status settle(void* old, int32_t result) noexcept {
        if (result == KORV_NO_MEMORY_BUFFER) {
            std::free(old); /* the library has overwritten its pointer with NULL */
            get()->size = 0;
        }
        return Status(result);
    }
};

/** Owner of a converted request: a control block and a service definition in the X form. Their
 * texts stay those of the I records that they were converted from. */
class [[nodiscard]] Request {
  public:
    /** Converts a request and its service from the I form to the X form.
     *
     * @param      block    the request in the I form
     * @param      service  the service in the I form
     * @param[out] request  owns the converted records; what it owned before is released. On failure
     *                      it owns nothing
     * @retval Status::success           converted
     * @retval Status::failure           no memory for one of the two records
     * @retval Status::noMemoryField     as KORVCnvCtrlBlkFromIToX
     * @retval Status::noMemoryReference as KORVCnvCtrlBlkFromIToX
     * @retval Status::noMemoryOperand   as KORVCnvSvcDefFromIToX */
    [[nodiscard]] static Status convert(const CtrlBlkI& block, const SvcDefI& service,
                                        Request& request) noexcept {
        request.service_ = make<SvcDefX>();
        request.block_ = make<CtrlBlkX>();
        Status status{KORVCnvCtrlBlkFromIToX(&block, request.block())};
        if (status == Status::success) {
            status = Status(KORVCnvSvcDefFromIToX(request.block(), &service, request.service()));
        }
        if (status != Status::success) {
            request.service_.reset();
            request.block_.reset();
        }
        return status;
    }

    /** @return the converted control block, which stays owned; NULL if there is no result */
    [[nodiscard]] CtrlBlkX* block() noexcept { return block_.get(); }
    /** @return the converted control block, which stays owned; NULL if there is no result */
    [[nodiscard]] const CtrlBlkX* block() const noexcept { return block_.get(); }
    /** @return the converted service definition, which stays owned; NULL if there is no result */
    [[nodiscard]] SvcDefX* service() noexcept { return service_.get(); }
    /** @return the converted service definition, which stays owned; NULL if there is no result */
    [[nodiscard]] const SvcDefX* service() const noexcept { return service_.get(); }

  private:
    Owner<CtrlBlkX> block_;
    Owner<SvcDefX> service_; /* after the block whose fields it borrows, so released before it */
};

/* ---- Ranges ---------------------------------------------------------------------------------- */

/** The next record in a list.
 *
 * @param record  a record with a link
 * @return the next one; NULL at the end */
template <class Record>
[[nodiscard]] Record* successor(Record& record) noexcept {
    if constexpr (std::is_same_v<std::remove_const_t<Record>, ErrorRecord>) {
        return record.next;
    } else {
        return record.link;
    }
}

/** A list of linked records, from one of them to the end. It owns nothing and may be copied freely:
 * under C++20 it is a view and a borrowed range. A record must not be freed before the iterator has
 * left it. */
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

    /** An empty list. */
    List() noexcept = default;
    /** A list from a record on.
     *
     * @param first  the record, or NULL for an empty list */
    explicit List(Record* first) noexcept : first_(first) {}
    /** A list of constant records from one of records that can be changed.
     *
     * @param other  the same list */
    template <class Other, std::enable_if_t<std::is_same_v<const Other, Record>, int> = 0>
    List(List<Other> other) noexcept : first_(other.first_) {}

    /** @return an iterator to the first record */
    [[nodiscard]] iterator begin() const noexcept { return iterator(first_); }
    /** @return an iterator past the last record */
    [[nodiscard]] iterator end() const noexcept { return iterator(); }
    /** @return whether the list has no record */
    [[nodiscard]] bool empty() const noexcept { return !first_; }

  private:
    template <class Other>
    friend class List;
    Record* first_ = nullptr;
};

/** Records that are stored one after the other. It owns nothing and may be copied freely: under
 * C++20 it is a view and a borrowed range. */
template <class T>
class Row {
  public:
    /** No records. */
    Row() noexcept = default;
    /** A number of records.
     *
     * @param first  the first record
     * @param size   number of records */
    Row(T* first, std::size_t size) noexcept : first_(first), size_(size) {}
    /** Constant records from records that can be changed.
     *
     * @param other  the same records */
    template <class Other, std::enable_if_t<std::is_same_v<const Other, T>, int> = 0>
    Row(Row<Other> other) noexcept : first_(other.begin()), size_(other.size()) {}

    /** @return a pointer to the first record */
    [[nodiscard]] T* begin() const noexcept { return first_; }
    /** @return a pointer past the last record */
    [[nodiscard]] T* end() const noexcept { return first_ + size_; }
    /** @return the number of records */
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    /** @return whether there is no record */
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    /** @param index  index from 0, less than size()
     * @return the record at the index */
    [[nodiscard]] T& operator[](std::size_t index) const noexcept { return first_[index]; }

  private:
    T* first_ = nullptr;
    std::size_t size_ = 0;
};

/** @cond */
/* The records that a pointer in a constant record leads to are constant, too. */
template <class Holding, class Record>
auto listOf(Holding&, Record* first) noexcept {
    return List<std::conditional_t<std::is_const_v<Holding>, const Record, Record>>(first);
}
/** @endcond */

/** The field definitions of a CtrlBlkI, CtrlBlkX or SvcDefX.
 *
 * @param block  the record with the list
 * @return the list; its records are constant if `block` is */
template <class Block>
[[nodiscard]] auto fields(Block& block) noexcept {
    return listOf(block, block.fieldDefs);
}

/** The field references of a CtrlBlkI or CtrlBlkX: the embedded one and those linked to it.
 *
 * @param block  the record with the list
 * @return the list; its records are constant if `block` is */
template <class Block>
[[nodiscard]] auto references(Block& block) noexcept {
    return List(&block.fieldRefs);
}

/** Finds the field that a reference refers to. The search counts along the field list of the
 * block, because FieldRefX::fieldDef is not NULL for a position past the end of the list, and
 * FieldRefI::fieldDef need not be set.
 *
 * @param block      a CtrlBlkI or CtrlBlkX
 * @param reference  one of its references
 * @return the field, constant if `block` is; NULL when the list is too short */
template <class Block, class Reference>
[[nodiscard]] auto pickedField(Block& block, const Reference& reference) noexcept {
    const auto list = fields(block);
    auto field = list.begin();
    auto steps = static_cast<int16_t>(reference.fieldPos);
    for (; steps > 0 && field != list.end(); --steps) ++field;
    return field.operator->();
}

/** The operands of a SvcDefI or SvcDefX.
 *
 * @param service  the record with the list
 * @return the list; its records are constant if `service` is */
template <class Service>
[[nodiscard]] auto operands(Service& service) noexcept {
    return listOf(service, service.oprDefs);
}

/** The errors of a request, the oldest first.
 *
 * @param anchor  an ErrorAnchor
 * @return the list; its records are constant if `anchor` is */
template <class Anchor>
[[nodiscard]] auto errors(Anchor& anchor) noexcept {
    return listOf(anchor, anchor.head);
}

/** The token slots of an ErrorRecord, including unused ones (tokenId 0), but not the spare slot.
 *
 * @param record  an error
 * @return its slots; constant if `record` is */
template <class Record>
[[nodiscard]] auto tokens(Record& record) noexcept {
    const int16_t count = record.tokenSlotCount;
    return Row(&record.tokenSlots[0], static_cast<std::size_t>(count > 0 ? count : 0));
}

/** The elements of a list in a text, such as `id, "Last Name", city`, as KORV_GetNextElement copies
 * them: quoted elements keep their quotation marks, other elements are converted to upper case.
 *
 * This is an input range: each step overwrites the previous element. A loop over it ends at the end
 * of the list or at malformed input, so check status() after the loop:
 *
 * @code
 * korv::Elements names(L"id, \"Last Name\", city");
 * for (const std::wstring_view name : names) std::printf("%ls\n", name.data());
 * if (!korv::succeeded(names.status())) std::puts("misplaced quotation mark, or no memory");
 * @endcode
 *
 * Elements may be empty, but no element follows a delimiter at the end of the list. A quotation
 * mark that is never closed is not reported: the element begins with one and ends without one. */
class [[nodiscard]] Elements {
  public:
    /** @cond */
    class iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::wstring_view;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = std::wstring_view;

        explicit iterator(Elements* elements = nullptr) noexcept : elements_(elements) {}
        std::wstring_view operator*() const noexcept {
            return {elements_->output(), elements_->length_};
        }
        iterator& operator++() noexcept {
            if (!elements_->read()) elements_ = nullptr;
            return *this;
        }
        void operator++(int) noexcept { ++*this; }
        friend bool operator==(iterator a, iterator b) noexcept {
            return a.elements_ == b.elements_;
        }
        friend bool operator!=(iterator a, iterator b) noexcept { return !(a == b); }

      private:
        Elements* elements_;
    };
    /** @endcond */

    /** Allocates a buffer for the longest element that the list can have.
     *
     * @param list       zero-terminated text, which is not copied and must not change; NULL is an
     *                   empty list
     * @param delimiter  the character that ends an element */
    explicit Elements(const wchar_t* list, wchar_t delimiter = L',') noexcept
        : list_(list ? list : L""), delimiter_(delimiter) {
        const std::size_t bytes = (view(list_).size() + 1) * sizeof(wchar_t);
        Buffer buffer;
        if (bytes <= INT32_MAX) allocation_ = buffer.resize(static_cast<int32_t>(bytes));
        buffer_ = std::move(buffer);
    }

    /** Reads the first element. All earlier iterators become invalid.
     *
     * @return an iterator to the first element, or end() if no element can be read. The iterator
     *         returns each element as a std::wstring_view of zero-terminated text, valid until
     *         the next step */
    [[nodiscard]] iterator begin() noexcept {
        next_ = 0;
        return output() && read() ? iterator(this) : end();
    }
    /** @return an iterator past the last element */
    [[nodiscard]] iterator end() const noexcept { return iterator(); }

    /** Whether all elements read so far are well-formed.
     *
     * @retval Status::success        they are
     * @retval Status::failure        the loop ended at a misplaced quotation mark
     * @retval Status::noMemoryBuffer no memory for the buffer; no element can be read */
    [[nodiscard]] Status status() const noexcept {
        return next_ == kStrayQuote ? Status::failure : allocation_;
    }

    /** The position of the latest element in the list, for messages. After malformed input it is
     * that of the malformed element.
     *
     * @return index of the element's first character, or of the first space before it */
    [[nodiscard]] std::size_t position() const noexcept { return position_; }

  private:
    /* Results of KORV_GetNextElement */
    static constexpr int32_t kLastElement = -1;
    static constexpr int32_t kStrayQuote = -3;

    wchar_t* output() noexcept { return static_cast<wchar_t*>(buffer_->data); }
    /* Reads the next element; false at the end of the list or if the element is malformed. */
    bool read() noexcept {
        if (next_ < 0) return false;
        position_ = static_cast<uint32_t>(next_);
        uint32_t length = 0;
        next_ = KORV_GetNextElement(list_, output(), &length, delimiter_, 0, position_);
        length_ = length;
        return next_ >= kLastElement;
    }

    const wchar_t* list_;
    wchar_t delimiter_;
    Buffer buffer_;
    Status allocation_ = Status::noMemoryBuffer;
    int32_t next_ = 0; /* the latest result of KORV_GetNextElement */
    uint32_t position_ = 0;
    uint32_t length_ = 0;
};

/* ---- Errors ---------------------------------------------------------------------------------- */

/** Appends an error to the chain of a request, then captures its tokens:
 *
 * @code
 * korv::ErrorBuilder(request, 12, 1, 2)
 *     .token(KORV_TOKID_COLNAME, L"CARD")
 *     .token(KORV_TOKID_SRCLEN, 20);
 * @endcode
 *
 * Tokens go to the newest error of the request: complete one error before you begin the next.
 *
 * Unlike TokenCapture, the builder refuses tokens beyond the number of slots, and tokens with the
 * identifier 0, because TermErrors would not release their texts. If the error itself could not be
 * appended, the builder ignores all tokens. */
class ErrorBuilder {
  public:
    /** Appends the error with ErrorCapture.
     *
     * @param context     the request; its errorAnchor may be NULL, which is a failure
     * @param firstCode   first code of the error
     * @param secondCode  second code of the error
     * @param slots       number of tokens that the error can hold */
    ErrorBuilder(const CtrlBlkI& context, uint32_t firstCode, uint32_t secondCode,
                 int16_t slots) noexcept
        : context_(context),
          status_(Status(ErrorCapture(&context, firstCode, secondCode, slots))),
          unused_(status_ == Status::success ? slots : int16_t{0}) {}
    /** @cond */
    ErrorBuilder(const ErrorBuilder&) = delete;
    ErrorBuilder& operator=(const ErrorBuilder&) = delete;
    /** @endcond */

    /** Captures a signed number.
     *
     * @param id      KorvTokenId
     * @param number  the value
     * @return this builder */
    ErrorBuilder& token(uint32_t id, const int32_t& number) noexcept {
        return capture(id, &number, KORV_TYPE_INTEGER, 0);
    }
    /** Captures an unsigned number.
     *
     * @param id      KorvTokenId
     * @param number  the value
     * @return this builder */
    ErrorBuilder& token(uint32_t id, const uint32_t& number) noexcept {
        return capture(id, &number, KORV_TYPE_U_INTEGER, 0);
    }
    /** Captures a wide text.
     *
     * @param id    KorvTokenId
     * @param text  zero-terminated; NULL is captured as "<NULL>"
     * @return this builder */
    ErrorBuilder& token(uint32_t id, const wchar_t* text) noexcept {
        return capture(id, text, KORV_TYPE_WVARCHAR_SZ, 0);
    }
    /** Captures a wide text.
     *
     * @param id    KorvTokenId
     * @param text  a view whose data() is NULL is captured as "<NULL>"
     * @return this builder */
    ErrorBuilder& token(uint32_t id, std::wstring_view text) noexcept {
        return capture(id, text.data(), KORV_TYPE_WCHAR, text.size() * sizeof(wchar_t));
    }
    /** Captures a narrow text. Each byte is taken as one ISO 8859-1 character.
     *
     * @param id    KorvTokenId
     * @param text  zero-terminated; NULL is captured as "<NULL>"
     * @return this builder */
    ErrorBuilder& token(uint32_t id, const char* text) noexcept {
        return capture(id, text, KORV_TYPE_VARCHAR_SZ, 0);
    }
    /** Captures a narrow text. Each byte is taken as one ISO 8859-1 character.
     *
     * @param id    KorvTokenId
     * @param text  a view whose data() is NULL is captured as "<NULL>"
     * @return this builder */
    ErrorBuilder& token(uint32_t id, std::string_view text) noexcept {
        return capture(id, text.data(), KORV_TYPE_CHAR, text.size());
    }

    /** The first failure.
     *
     * @retval Status::success     the error and all its tokens are captured
     * @retval Status::failure     the request has no error anchor, or there was no memory
     * @retval Status::tokenBadId  an identifier is 0, or 91 or more
     * @retval Status::tokenNoSlot more tokens than slots */
    [[nodiscard]] Status status() const noexcept { return status_; }

  private:
    ErrorBuilder& capture(uint32_t id, const void* value, int16_t dataType,
                          std::size_t bytes) noexcept {
        Status status = Status::tokenNoSlot;
        if (id == KORV_TOKID_UNUSED) {
            status = Status::tokenBadId;
        } else if (unused_ > 0) {
            status =
                Status(TokenCapture(&context_, value, dataType, id, static_cast<uint32_t>(bytes)));
            /* After any other failure the slot keeps the identifier: it is used up. */
            if (status != Status::tokenBadId) --unused_;
        }
        if (status_ == Status::success) status_ = status;
        return *this;
    }

    const CtrlBlkI& context_;
    Status status_;
    int16_t unused_;
};

}  // namespace korv

/** @cond */
#ifdef __cpp_lib_ranges
/* <string_view> declares both templates. <ranges> is not included: it is large, and clang 14 cannot
 * compile the one of libstdc++ 12. */
template <class Record>
inline constexpr bool std::ranges::enable_view<korv::List<Record>> = true;
template <class Record>
inline constexpr bool std::ranges::enable_borrowed_range<korv::List<Record>> = true;
template <class T>
inline constexpr bool std::ranges::enable_view<korv::Row<T>> = true;
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<korv::Row<T>> = true;
#endif
/** @endcond */

#endif
