# Sourced by the scripts that build: options of cmake that make compiling quick, a cache where there is one.
quick=(-DMMSBRIX_PRECOMPILED_HEADERS=ON)
if command -v ccache >/dev/null; then
  quick=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DMMSBRIX_PRECOMPILED_HEADERS=OFF)
fi
