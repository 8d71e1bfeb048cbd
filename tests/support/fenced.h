// A buffer between an unreadable page and canaries: a read or write past its end faults, and a
// write before its start is found by intact().
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string_view>

template <class T>
class Fenced {
  public:
    enum class Fence { behind, before };

    // `count` elements with the unreadable page right after them (behind) or right before them
    // (before).
    explicit Fenced(std::size_t count, Fence fence = Fence::behind) : count_(count) {
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t bytes = count * sizeof(T);
        room_ = (bytes + page - 1) / page * page + page;
        map_ = static_cast<char*>(mmap(nullptr, room_ + page, PROT_READ | PROT_WRITE,
                                       MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (map_ == MAP_FAILED) std::abort();
        mapped_ = room_ + page;
        const bool behind = fence == Fence::behind;
        mprotect(behind ? map_ + room_ : map_, page, PROT_NONE);
        open_ = behind ? map_ : map_ + page;
        std::memset(open_, canary, room_);
        data_ = reinterpret_cast<T*>(behind ? open_ + room_ - bytes : open_);
    }

    // A copy of `values`, ending at the unreadable page.
    Fenced(std::initializer_list<T> values) : Fenced(values.size()) {
        std::size_t i = 0;
        for (const T& value : values) data_[i++] = value;
    }

    // A copy of `text` and, unless told otherwise, a terminator, ending at the unreadable page.
    explicit Fenced(std::basic_string_view<T> text, bool terminated = true)
        : Fenced(text.size() + (terminated ? 1 : 0)) {
        std::memcpy(data_, text.data(), text.size() * sizeof(T));
        if (terminated) data_[text.size()] = T{};
    }

    Fenced(const Fenced&) = delete;
    Fenced& operator=(const Fenced&) = delete;
    ~Fenced() { munmap(map_, mapped_); }

    T* data() { return data_; }
    T& operator[](std::size_t i) { return data_[i]; }
    std::size_t size() const { return count_; }

    // Whether everything readable around the buffer is as it was.
    bool intact() const {
        const char* begin = reinterpret_cast<const char*>(data_);
        const char* end = begin + count_ * sizeof(T);
        for (const char* p = open_; p < begin; ++p) {
            if (*p != canary) return false;
        }
        for (const char* p = end; p < open_ + room_; ++p) {
            if (*p != canary) return false;
        }
        return true;
    }

    // What the buffer holds before anything is written to it.
    static constexpr char canary = 0x5C;

  private:
    std::size_t count_;
    std::size_t room_;
    std::size_t mapped_;
    char* map_;
    char* open_;
    T* data_;
};
