#pragma once

// True when the process token is elevated; false when it is not or when the
// token cannot be asked.
bool IsProcessElevated();
