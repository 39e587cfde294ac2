#!/usr/bin/env bash
# Makes the findings rules' fixture reports in tests/findings/fixtures/: real
# reports of the program, run headless under Wine in a throwaway prefix, each
# in the state one rule looks for (or a near miss of it). States Wine cannot
# take (no network, a full disk, no administrator rights, a report edited by
# hand) are made from the healthy report by editing its text and making its
# checksum again: those files are named *-edited.txt. Run once after
# `make build`; the reports are committed, and the tests read them.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/wine-env.sh
out=$PWD/tests/findings/fixtures
bin=$PWD/build/bin
mkdir -p "$out"

work=$(mktemp -d)
trap 'wine_cleanup; rm -rf "$work"' EXIT
display_start
wine_prefix_create "$work/prefix"

drive=$WINEPREFIX/drive_c
standard="$drive/Program Files/Orvane Software V9"
shared="$drive/ProgramData/Orvane Software"
standard_win='C:\Program Files\Orvane Software V9'
key='HKLM\Software\Orvane Software'

reg() { wine reg "$@" /f >/dev/null 2>&1 </dev/null; }
# A key or value that is not there is fine to delete.
unreg() { reg delete "$@" || true; }

# The healthy suite: every library and program at the release's version
# (copies of the program, which carries it), a text file, an empty log,
# the shared folders with their files, the installer's data in the registry.
install_suite() {
  rm -rf "$standard" "$shared" "$drive/tools"
  mkdir -p "$standard" "$shared/Runner" "$drive/tools"
  cp "$bin/OrvaneDiagnostics.exe" "$standard/OrvaneDiagnostics.exe"
  cp "$bin/OrvaneDiagnostics.exe" "$standard/Core.dll"
  cp "$bin/OrvaneDiagnostics.exe" "$standard/Runner.dll"
  printf 'Orvane Software V9\r\n' >"$standard/readme.txt"
  : >"$standard/install.log"
  printf '[main]\r\n' >"$shared/settings.ini"
  printf 'exit\r\n' >"$shared/Runner/nightly.cmd"
  cp "$bin/OrvaneDiagnostics.exe" "$drive/tools/OrvaneDiagnostics.exe"
  unreg "$key"
  reg add "$key" /v InstallLocation /t REG_SZ /d "$standard_win"
  reg add "$key" /v VersionMajor /t REG_DWORD /d 9
  reg add "$key" /v VersionMinor /t REG_DWORD /d 3
  reg add "$key" /v VersionRevision /t REG_DWORD /d 1
  reg add "$key" /v VersionBuildReleaseRevision /t REG_DWORD /d 1042
  reg add "$key" /v VersionBuild /t REG_SZ /d 1042
}

remove_suite() {
  rm -rf "$standard" "$shared"
  unreg "$key"
}

# report NAME [PROGRAM]: a headless report by the program in the suite's
# directory (or PROGRAM, a Windows path), saved as NAME.
report() {
  local program=${2:-"$standard_win\\OrvaneDiagnostics.exe"}
  wine "$program" "$(winepath -w "$out/$1")" </dev/null >/dev/null 2>&1
  build-native/bin/reportcheck "$out/$1"
}

install_suite
report healthy.txt
report outside-installation.txt 'C:\tools\OrvaneDiagnostics.exe'

cp "$bin/fixture_version_neutral.dll" "$standard/Runner.dll"
report mixed-versions.txt
install_suite

cp "$bin/fixture_version_french.dll" "$standard/Legacy.dll"
report unversioned-file.txt
install_suite

: >"$standard/Core.dll"
report empty-file.txt
install_suite

reg add "$key" /v VersionMinor /t REG_DWORD /d 2
report registry-version.txt
unreg "$key" /v VersionMinor
unreg "$key" /v VersionRevision
unreg "$key" /v VersionBuildReleaseRevision
report registry-version-near.txt
install_suite

reg add "$key" /v VersionMinor /t REG_SZ /d 3
report registry-number-as-text.txt
install_suite

mkdir -p "$drive/Orvane"
reg add "$key" /v InstallLocation /t REG_SZ /d 'C:\Orvane'
report install-location-empty.txt
install_suite

reg add "$key" /v InstallLocation /t REG_SZ /d 'c:\program files\orvane software v9\'
report install-location-twice.txt
install_suite

rm -rf "$shared/Runner"
report shared-directory-missing.txt
install_suite

remove_suite
report not-installed.txt 'C:\tools\OrvaneDiagnostics.exe'
# Installation data left behind by an uninstaller, files gone: installed for
# the registry, so not "not installed".
install_suite
rm -rf "$standard"/*
report not-installed-near.txt 'C:\tools\OrvaneDiagnostics.exe'

python3 scripts/edit-report.py "$out"
