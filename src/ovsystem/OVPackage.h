// What the user-interface library knows about the installed package. It reads
// the running executable's own version resource.
#pragma once

#include <string>
#include <string_view>

#include "ovsystem/OVString.h"

// The package's version with its build number, "major.minor.revision.build",
// from the fixed product version of the executable's version resource;
// empty when the executable has none.
OVString OVGetPackageVersionWithBuild();

// A string of the executable's version resource (block 040904b0), such as
// "FileDescription" or "LegalCopyright"; empty when absent.
std::wstring OVGetPackageString(std::wstring_view name);

// The interface language of the library's own windows (the About box).
void OVSetLanguage(bool english);
bool OVIsEnglish();
