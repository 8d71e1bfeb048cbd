// The common part of the conversions: from wide text to UTF-8, and from there to the reader.
#include "converted_source.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "text/utf8_text.h"

namespace tool {

size_t ConvertedSource::read(char* buffer, size_t capacity) {
    while (begin_ == end_) {
        if (!fault_.empty()) throw MalformedInput(fault_);
        if (ended_) return 0;
        begin_ = end_ = 0;
        convertMore();
    }
    const size_t count = std::min(capacity, end_ - begin_);
    std::memcpy(buffer, utf8_.data() + begin_, count);
    begin_ += count;
    return count;
}

void ConvertedSource::append(const wchar_t* wide, size_t characters) {
    if (ended_) return;
    const auto length = static_cast<uint32_t>(std::find(wide, wide + characters, 0) - wide);
    // A character has up to 4 bytes, and the converter writes a terminator.
    const size_t room = end_ + size_t{length} * 4 + 1;
    if (utf8_.size() < room) utf8_.resize(room);
    uint32_t bytes = 0;
    if (length > 0 && KORVCnvWVarcharSzToVarcharSz(wide, &length, utf8_.data() + end_,
                                                   static_cast<uint32_t>(utf8_.size() - end_),
                                                   &bytes, &text::kUtf8Options) != CNV_SUCCESS) {
        end("the input cannot be converted to UTF-8");
        return;
    }
    end_ += bytes;
    if (length < characters) {
        utf8_[end_++] = '\0';
        end();
    }
}

void ConvertedSource::end(std::string message) {
    if (ended_) return;
    ended_ = true;
    fault_ = std::move(message);
}

}  // namespace tool
