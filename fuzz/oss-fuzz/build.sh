#!/usr/bin/env bash
# Builds the fuzz targets into $OUT with the service's compilers, flags and engine, and packs the kept
# inputs of each; run in the checkout. What the targets load is beside them in $OUT.
set -eu
# The tests have strings of JXChars, which the service's own C++ library does not; the one
# that has is linked into the targets, because the machine that runs them may lack it.
export CXXFLAGS=${CXXFLAGS/-stdlib=libc++/}
build=$WORK/jxwem
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_C_FLAGS_DEBUG= -DCMAKE_CXX_FLAGS_DEBUG= -DJX_TESTS=ON -DJX_FUZZ=ON \
  -DJX_SANITIZE="$SANITIZER" -DJX_FUZZ_ENGINE="$LIB_FUZZING_ENGINE" \
  -DCMAKE_EXE_LINKER_FLAGS="-static-libstdc++ -static-libgcc"
mapfile -t targets < <(tools/fuzz --list)
cmake --build "$build" --target broken_module "${targets[@]/%/_fuzz}"
cp "$build"/jxwem.so "$build"/broken_module.so "$OUT"
for target in "${targets[@]}"; do
  cp "$build/${target}_fuzz" "$OUT"
  printf '[libfuzzer]\nmax_len = 2000\n' >"$OUT/${target}_fuzz.options"
  rm -f "$OUT/${target}_fuzz_seed_corpus.zip"
  zip -jqr "$OUT/${target}_fuzz_seed_corpus.zip" "fuzz/corpus/$target"
done
