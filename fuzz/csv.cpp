// The CSV parser with chunks of any size and any source, against a reader of the whole text.
#include "parsed_rows.h"
#include "support/expect.h"
#include "support/input.h"
#include "text_source.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t atOnce = input.byte() + 1u, chunkSize = input.byte() + 1u;
    // The byte order mark has three bytes.
    const std::size_t longest = std::max<std::size_t>(input.number<uint16_t>(), 3);
    std::string text;
    while (!input.empty()) text += static_cast<char>(input.byte());

    TextSource source(text, atOnce);
    tool::ChunkReader reader(source, "in.csv", chunkSize, longest);
    FUZZ_EXPECT(reader.hasByteOrderMark() == text.starts_with("\xEF\xBB\xBF"));
    FUZZ_EXPECT(parsedRows(reader) == reference::CsvReader(text, ',', longest).read());
    return 0;
}
