// "Ask the size, resize, ask again": the one loop behind every Win32 call
// that fills a caller's buffer and, when the buffer is too small, says how
// large it must be (or leaves the caller to guess a larger one).
//
// No <windows.h> here: the loop is plain C++, tested natively.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace w32 {

// What one ask gave.
struct BufferAnswer {
    enum class Kind { kFilled, kTooSmall, kFailed };
    Kind kind;
    // kFilled: the elements of the buffer that hold the result;
    // kTooSmall: the elements the next ask needs.
    std::size_t size;

    static constexpr BufferAnswer Filled(std::size_t used) { return {Kind::kFilled, used}; }
    static constexpr BufferAnswer TooSmall(std::size_t needed) { return {Kind::kTooSmall, needed}; }
    static constexpr BufferAnswer Failed() { return {Kind::kFailed, 0}; }
};

// For calls that may be asked as often as they keep growing.
inline constexpr std::size_t kAskWhileGrowing = SIZE_MAX;

// Calls ask(buffer) with a buffer of `firstSize` value-initialised elements,
// then, for as long as it answers kTooSmall with a size larger than the
// buffer's, again with a fresh buffer of that size, at most `maxAsks` times
// in all. Returns the buffer cut to the size of a kFilled answer; nothing
// when the call fails, asks for no more than it had, or is still too small
// after `maxAsks` asks. The helper calls nothing else between the asks, so
// the last error of a failed call is still there for the caller.
template <class Buffer, class Ask>
std::optional<Buffer> FillGrowingBuffer(std::size_t firstSize, std::size_t maxAsks, Ask ask) {
    Buffer buffer(firstSize, typename Buffer::value_type{});
    for (std::size_t asked = 0; asked < maxAsks; ++asked) {
        const BufferAnswer answer = ask(buffer);
        if (answer.kind == BufferAnswer::Kind::kFailed) return std::nullopt;
        if (answer.kind == BufferAnswer::Kind::kFilled) {
            buffer.resize(answer.size < buffer.size() ? answer.size : buffer.size());
            return buffer;
        }
        if (answer.size <= buffer.size()) return std::nullopt;
        buffer.assign(answer.size, typename Buffer::value_type{});
    }
    return std::nullopt;
}

}  // namespace w32
