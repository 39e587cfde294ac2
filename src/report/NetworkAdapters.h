// The Network section's body: a block of lines per network adapter.
#pragma once

#include <string>

// Replaces `output` with the 8-bit text of the adapter listing (or its
// failure lines). The text is never cut, whatever its length.
void ListNetworkAdapters(std::string& output);
