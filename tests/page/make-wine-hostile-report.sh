#!/usr/bin/env bash
# Makes tests/page/data/wine-hostile.txt, a report made by the program under
# Wine, run from a folder whose files carry names that Windows allows but
# that mean something to HTML, a template, a shell or a reader's eye: "&",
# "'", entities, "{{...}}", "$(...)", a right-to-left override. (Names with
# "<", ">", quotes or control characters Windows refuses; the page tests
# make those by hand.) Run again only to make the fixture anew:
#   tests/page/make-wine-hostile-report.sh   (after make build)
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/wine-env.sh

work=$(mktemp -d /tmp/orvane-hostile.XXXXXX)
cleanup() { wine_cleanup; rm -rf "$work"; }
trap cleanup EXIT
display_start
wine_prefix_create "$work/prefix" >/dev/null 2>&1

suite="$work/suite"
mkdir -p "$suite"
cp build/bin/OrvaneDiagnostics.exe "$suite/"
names=(
  "Tom & Jerry's.dll"
  "&amp;&lt;script&gt;.txt"
  "{{data}} {{script}}.txt"
  "\$(id) \`id\` %TEMP%.txt"
  $'\u202Etxt.exe'
  $'\uFF1Cscript\uFF1E.txt'
)
for name in "${names[@]}"; do printf 'x' >"$suite/$name"; done
wine "$suite/OrvaneDiagnostics.exe" "$(winepath -w "$work/report.txt")" </dev/null
mkdir -p tests/page/data
cp "$work/report.txt" tests/page/data/wine-hostile.txt
build-native/bin/reportcheck tests/page/data/wine-hostile.txt
