#!/usr/bin/env bash
# Installs a build into a fresh prefix and builds the program beside this script against it, outside
# the tree: with find_package, and with pkg-config. Then every installed header is compiled alone.
# usage: check.sh BUILD_DIR CXX [FLAG...]
set -euo pipefail
build=$1
cxx=$2
shift 2
flags=("$@")
here=$(cd "$(dirname "$0")" && pwd)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
cp "$here/main.cpp" "$here/CMakeLists.txt" "$work"

cmake --install "$build" --prefix "$prefix" >"$work/log" || { cat "$work/log"; exit 1; }

expect_made() {
  grep -qE '^made [0-9a-f-]{36}$' <<<"$1" || { echo "the program said: $1"; exit 1; }
}

echo "find_package"
{
  cmake -S "$work" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_CXX_FLAGS="${flags[*]}" && cmake --build "$work/build"
} >"$work/log" || { cat "$work/log"; exit 1; }
expect_made "$("$work/build/outsider")"

echo "pkg-config"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zelv.pc)")
export PKG_CONFIG_PATH
libdir=$(pkg-config --variable=libdir zelv)
# shellcheck disable=SC2046
"$cxx" "${flags[@]}" "$work/main.cpp" -o "$work/outsider" $(pkg-config --cflags --libs zelv)
expect_made "$(LD_LIBRARY_PATH=$libdir "$work/outsider")"

echo "each header alone"
find "$prefix/include" -name '*.h' -printf '%P\n' | sort >"$work/headers"
grep -qx zelv/Zelv.h "$work/headers"
for folder in interfaces infrastructure platform; do
  grep -q "^zelv/$folder/" "$work/headers" || { echo "no header of $folder"; exit 1; }
done
while read -r header; do
  echo "#include <$header>" >"$work/alone.cpp"
  # shellcheck disable=SC2046
  "$cxx" -Wall -Wextra -Wpedantic -Werror -fsyntax-only $(pkg-config --cflags zelv) "$work/alone.cpp" ||
    { echo "$header does not stand alone"; exit 1; }
done <"$work/headers"

echo "zelv-tv"
"$prefix/bin/zelv-tv" --help >/dev/null
echo "$(wc -l <"$work/headers") headers"
