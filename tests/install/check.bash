# Checks of an installed tree, for the tests beside this file. They take `$work`, a folder to work in, `$cmake` and
# `$compiler`.

clients="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

expect() {
  [[ "$("$1")" == "-123.45" ]] || { echo "$1 does not print -123.45" >&2; exit 1; }
}

# check_clients <prefix>: builds and runs the client in both ways that users have.
check_clients() {
  local library flags
  # The folder's name is the machine's choice: lib, lib64 or lib/x86_64-linux-gnu.
  library="$(dirname "$(find "$1" -name liboxrbitstreamutilities.so)")"

  echo "a client by find_package"
  "$cmake" -S "$clients" -B "$work/client" -G Ninja -DCMAKE_PREFIX_PATH="$1" -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
  "$cmake" --build "$work/client" >/dev/null
  expect "$work/client/client"

  echo "a client by pkg-config"
  read -ra flags <<<"$(PKG_CONFIG_PATH="$library/pkgconfig" pkg-config --cflags --libs oxrbitstreamutilities)"
  "$compiler" -std=c++20 "$clients/client.cpp" -o "$work/plain" "${flags[@]}" -Wl,-rpath,"$library"
  expect "$work/plain"
}
