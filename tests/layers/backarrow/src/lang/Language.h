// The language module includes nothing of ours.
#pragma once
#include "w32/Text.h"
