// The installation section's value lines and the product id line from any
// data the registry can hand back: any bytes, any length, whatever the
// value's type. The data sits in a heap block of exactly its own size, so
// AddressSanitizer stops any read past it; in particular a string that fills
// the 4,096-byte buffer without a terminator.
//
// The report never asks for a value's type, so a type is only the shape its
// data takes. Input: byte 0 chooses the line (bits 0-2: the seven
// installation values, then the product id) and the shape (bits 3-5):
//   0  the rest of the input as it is (REG_BINARY, REG_NONE, anything);
//   1  the rest repeated to exactly 4,096 bytes, NUL bytes made 'x': a string
//      filling the buffer with no terminator;
//   2  the rest repeated to 4,097-4,352 bytes: larger than the buffer (the
//      reader refuses those; the text must still stop at the capacity);
//   3  the rest cut to 0-3 bytes: a number that is too short;
//   4  exactly 4 bytes (REG_DWORD);   5  exactly 8 bytes (REG_QWORD);
//   6  the rest and a NUL unit (REG_SZ);
//   7  the rest and two NUL units (REG_MULTI_SZ).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "format/RegistryValueText.h"

namespace {

std::vector<std::uint8_t> Shape(unsigned shape, const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(data, data + size);
    const auto repeatTo = [&bytes](std::size_t length) {
        std::vector<std::uint8_t> out;
        out.reserve(length);
        for (std::size_t i = 0; i < length; ++i) out.push_back(bytes.empty() ? 'x' : bytes[i % bytes.size()]);
        return out;
    };
    switch (shape) {
        case 1: {
            std::vector<std::uint8_t> full = repeatTo(kRegistryDataCapacity);
            std::replace(full.begin(), full.end(), std::uint8_t{0}, std::uint8_t{'x'});
            return full;
        }
        case 2: return repeatTo(kRegistryDataCapacity + 1 + (size ? data[0] : 0));
        case 3: bytes.resize(std::min<std::size_t>(bytes.size(), size ? data[0] % 4 : 0)); return bytes;
        case 4: bytes.resize(4); return bytes;
        case 5: bytes.resize(8); return bytes;
        case 6: bytes.insert(bytes.end(), {0, 0}); return bytes;
        case 7: bytes.insert(bytes.end(), {0, 0, 0, 0}); return bytes;
        default: return bytes;
    }
}

// The text as a cleared 4,096-byte buffer would show it: UTF-16LE units up to
// the first NUL unit or the end of what was read.
std::wstring ExpectedText(const std::vector<std::uint8_t>& data) {
    const std::size_t size = std::min(data.size(), kRegistryDataCapacity);
    std::wstring text;
    for (std::size_t i = 0; i < size; i += 2) {
        const unsigned low = data[i];
        const unsigned high = i + 1 < size ? data[i + 1] : 0;
        if ((low | high) == 0) break;
        text.push_back(static_cast<wchar_t>(low | high << 8));
    }
    return text;
}

std::int32_t ExpectedNumber(const std::vector<std::uint8_t>& data) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && i < data.size(); ++i) value |= std::uint32_t{data[i]} << (8 * i);
    return static_cast<std::int32_t>(value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned line = data[0] & 7;
    const std::vector<std::uint8_t> shaped = Shape((data[0] >> 3) & 7, data + 1, size - 1);

    // Exactly as many bytes as were read: one byte more is a heap overflow.
    const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[shaped.size() ? shaped.size() : 1]);
    std::copy(shaped.begin(), shaped.end(), block.get());
    const RegistryBytes bytes(block.get(), shaped.size());

    const std::wstring text = RegistryDataAsText(bytes);
    FUZZ_CHECK(text == ExpectedText(shaped));
    FUZZ_CHECK(text.size() <= kRegistryDataCapacity / 2);
    FUZZ_CHECK(text.find(L'\0') == std::wstring::npos);
    FUZZ_CHECK(RegistryDataAsNumber(bytes) == ExpectedNumber(shaped));
    // Nothing past the buffer's capacity ever counts.
    if (shaped.size() > kRegistryDataCapacity) {
        FUZZ_CHECK(RegistryDataAsText(bytes.first(kRegistryDataCapacity)) == text);
    }

    if (line == 7) {
        FUZZ_CHECK(FormatProductIdLine(bytes) == L"\tid: " + text + L"\n");
        return 0;
    }
    const InstallationValue& value = kInstallationValues[line];
    const std::wstring shown = value.format == RegistryValueFormat::kNumber
                                   ? std::to_wstring(RegistryDataAsNumber(bytes))
                                   : text;
    FUZZ_CHECK(FormatInstallationValueLine(value, bytes) == L"\t" + std::wstring(value.name) + L": " + shown + L"\n");
    return 0;
}
