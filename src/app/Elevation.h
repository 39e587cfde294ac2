#pragma once

// Nonzero when the process token is elevated; 0 when it is not or when the
// token cannot be asked.
int IsProcessElevated();
