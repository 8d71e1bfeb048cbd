// What the types of the C++ header are to the compiler: ranges and views, constant through constant
// records, without exceptions. Compiled in both standards and by every compiler; nothing here runs.
#include <type_traits>
#include <utility>

#include "korv/korv.hpp"

namespace {

// A constant record gives constant records, any other one gives records that can be changed.
template <class List, class Record>
constexpr bool kListHas = std::is_same_v<decltype(*std::declval<List>().begin()), Record&>;
#define GIVES(call, Holding, Record)                                           \
    static_assert(kListHas<decltype(call(std::declval<Holding&>())), Record>); \
    static_assert(kListHas<decltype(call(std::declval<const Holding&>())), const Record>)
GIVES(korv::fields, CtrlBlkI, FieldDefI);
GIVES(korv::fields, CtrlBlkX, FieldDefX);
GIVES(korv::fields, SvcDefX, FieldDefX);
GIVES(korv::references, CtrlBlkI, FieldRefI);
GIVES(korv::references, CtrlBlkX, FieldRefX);
GIVES(korv::operands, SvcDefI, OprDefI);
GIVES(korv::operands, SvcDefX, OprDefX);
GIVES(korv::errors, ErrorAnchor, ErrorRecord);
GIVES(korv::tokens, ErrorRecord, TokenSlot);

template <class Block, class Reference>
using Picked =
    decltype(korv::pickedField(std::declval<Block&>(), std::declval<const Reference&>()));
static_assert(std::is_same_v<Picked<CtrlBlkX, FieldRefX>, FieldDefX*>);
static_assert(std::is_same_v<Picked<const CtrlBlkX, FieldRefX>, const FieldDefX*>);
static_assert(std::is_same_v<Picked<const CtrlBlkI, FieldRefI>, const FieldDefI*>);

static_assert(std::is_same_v<decltype(std::declval<korv::Request&>().block()), CtrlBlkX*>);
static_assert(std::is_same_v<decltype(std::declval<korv::Request&>().service()), SvcDefX*>);
using ConstantRequest = const korv::Request&;
static_assert(std::is_same_v<decltype(std::declval<ConstantRequest>().block()), const CtrlBlkX*>);
static_assert(std::is_same_v<decltype(std::declval<ConstantRequest>().service()), const SvcDefX*>);
static_assert(
    std::is_same_v<decltype(std::declval<const korv::FieldWithTexts&>().get()), const FieldDefI*>);

// Constant records can be had from others, never the other way round.
template <template <class> class Range, class Record>
constexpr bool kAddsConst = std::is_convertible_v<Range<Record>, Range<const Record>> &&
                            !std::is_convertible_v<Range<const Record>, Range<Record>>;
static_assert(kAddsConst<korv::List, FieldDefX> && kAddsConst<korv::Row, TokenSlot>);

// What owns something is moved, never copied.
template <class T>
constexpr bool kMovesOnly =
    std::is_nothrow_move_constructible_v<T>&& std::is_nothrow_move_assignable_v<T> &&
    !std::is_copy_constructible_v<T>;
static_assert(kMovesOnly<korv::Request> && kMovesOnly<korv::Elements> && kMovesOnly<korv::Buffer>);
static_assert(!std::is_copy_constructible_v<korv::ErrorBuilder>);

// A number is not a status.
template <class Result, class = void>
struct TellsSuccess : std::false_type {};
template <class Result>
struct TellsSuccess<Result, std::void_t<decltype(korv::succeeded(std::declval<Result>()))>>
    : std::true_type {};
static_assert(TellsSuccess<korv::Status>::value);
static_assert(!TellsSuccess<int32_t>::value && !TellsSuccess<uint32_t>::value);
static_assert(!TellsSuccess<long>::value && !TellsSuccess<bool>::value);
static_assert(!TellsSuccess<KorvStatus>::value);
static_assert(korv::succeeded(korv::Status(KORV_SUCCESS)));
static_assert(!korv::succeeded(korv::Status(KORV_FAILURE)));

// A token is a 32-bit number or a text; other numbers would be cut without a word.
template <class Value, class = void>
struct IsToken : std::false_type {};
template <class Value>
struct IsToken<Value, std::void_t<decltype(std::declval<korv::ErrorBuilder&>().token(
                          KORV_TOKID_SRCLEN, std::declval<Value>()))>> : std::true_type {};
static_assert(IsToken<int32_t>::value && IsToken<uint32_t>::value && IsToken<int16_t>::value);
static_assert(IsToken<wchar_t*>::value && IsToken<const char*>::value);
static_assert(IsToken<std::wstring_view>::value && IsToken<std::string_view>::value);
static_assert(!IsToken<int64_t>::value && !IsToken<uint64_t>::value && !IsToken<double>::value);

// Nothing throws.
#define NEVER_THROWS(expression) static_assert(noexcept(expression), #expression)
NEVER_THROWS(korv::Request::convert(std::declval<const CtrlBlkI&>(), std::declval<const SvcDefI&>(),
                                    std::declval<korv::Request&>()));
NEVER_THROWS(korv::Elements(L""));
NEVER_THROWS(++std::declval<korv::Elements&>().begin());
NEVER_THROWS(korv::ErrorBuilder(std::declval<const CtrlBlkI&>(), 1, 2, 3).token(1, 2));
NEVER_THROWS(korv::view(L""));

static_assert(korv::view("AB").size() == 2 && korv::view(L"AB")[1] == L'B');

#ifdef __cpp_lib_ranges
template <class Range>
constexpr bool kIsListView = std::ranges::view<Range>&& std::ranges::forward_range<Range>&&
    std::ranges::borrowed_range<Range>&& std::ranges::common_range<Range>;
static_assert(kIsListView<korv::List<FieldDefI>> && kIsListView<korv::List<const FieldDefX>>);
static_assert(kIsListView<korv::List<const FieldRefX>> && kIsListView<korv::List<OprDef>>);
static_assert(kIsListView<korv::List<ErrorRecord>> && kIsListView<korv::Row<const TokenSlot>>);
static_assert(std::ranges::random_access_range<korv::Row<TokenSlot>>);
static_assert(std::ranges::contiguous_range<korv::Row<const TokenSlot>>);
static_assert(std::ranges::sized_range<korv::Row<TokenSlot>>);
// It owns its buffer: a view of it is taken by reference.
static_assert(std::ranges::input_range<korv::Elements> && !std::ranges::view<korv::Elements>);
static_assert(!std::ranges::forward_range<korv::Elements>);
static_assert(!std::ranges::borrowed_range<korv::Elements>);
#elif __cplusplus >= 202002L
#error "no ranges in the standard library"
#endif

}  // namespace
