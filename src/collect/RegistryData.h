// Raw registry data as the report reads it: whatever the value's type.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <vector>

// The bytes of `valueName` under `key`, read with a buffer of
// kRegistryDataCapacity bytes. Nothing when the value is missing, cannot be
// read or does not fit in that buffer.
std::optional<std::vector<std::uint8_t>> ReadRegistryData(HKEY key, const wchar_t* valueName);
