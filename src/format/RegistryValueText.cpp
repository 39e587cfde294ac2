#include "format/RegistryValueText.h"

#include <algorithm>

#include "format/LineForms.h"

namespace {

// Whatever the caller hands over, nothing beyond the read buffer's capacity
// exists for the report.
RegistryBytes WithinCapacity(RegistryBytes data) { return data.first(std::min(data.size(), kRegistryDataCapacity)); }

std::uint8_t ByteAt(RegistryBytes data, std::size_t index) { return index < data.size() ? data[index] : 0; }

}  // namespace

std::wstring RegistryDataAsText(RegistryBytes data) {
    data = WithinCapacity(data);
    std::wstring text;
    for (std::size_t i = 0; i < data.size(); i += 2) {
        const auto unit = static_cast<wchar_t>(ByteAt(data, i) | (ByteAt(data, i + 1) << 8));
        if (unit == L'\0') break;
        text.push_back(unit);
    }
    return text;
}

// A value of fewer than four bytes reads as if the buffer had been cleared
// before the read: the missing bytes are 0, never leftovers of another value.
std::int32_t RegistryDataAsNumber(RegistryBytes data) {
    data = WithinCapacity(data);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value |= static_cast<std::uint32_t>(ByteAt(data, i)) << (8 * i);
    return static_cast<std::int32_t>(value);
}

std::wstring FormatInstallationValueLine(const InstallationValue& value, RegistryBytes data) {
    std::wstring line = L"\t";
    line.append(value.name);
    line.append(lineform::kRegistryValueSeparator.Wide());
    if (value.format == RegistryValueFormat::kNumber)
        line.append(std::to_wstring(RegistryDataAsNumber(data)));
    else
        line.append(RegistryDataAsText(data));
    line.push_back(L'\n');
    return line;
}

std::wstring FormatProductIdLine(RegistryBytes data) {
    return std::wstring(lineform::kProductId.Wide()) + RegistryDataAsText(data) + L"\n";
}
