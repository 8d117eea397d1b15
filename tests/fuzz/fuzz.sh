#!/bin/bash
# Builds a fuzzing target with clang, seeds its corpus with what the
# program writes, and fuzzes for a bounded time.
#   fuzz.sh SOURCE_DIR BUILD_DIR SEED_WRITER SECONDS [TARGET SEED_KIND]
# TARGET defaults to project_decode_fuzz with SEED_KIND project (see
# write_seeds.cpp). Exits 77 (skipped) when clang or libFuzzer is not
# installed.
set -euo pipefail
source_dir=$1 build_dir=$2 seed_writer=$3 seconds=$4
target=${5:-project_decode_fuzz} seed_kind=${6:-project}

if ! command -v clang++ >/dev/null; then
  echo "clang++ is not installed; fuzzing skipped."
  exit 77
fi
probe=$(mktemp -d)
trap 'rm -rf "$probe"' EXIT
echo 'extern "C" int LLVMFuzzerTestOneInput(const char*, unsigned long) { return 0; }' > "$probe/p.cpp"
if ! clang++ -fsanitize=fuzzer "$probe/p.cpp" -o "$probe/p" 2>/dev/null; then
  echo "libFuzzer is not installed; fuzzing skipped."
  exit 77
fi

cmake -S "$source_dir/tests/fuzz" -B "$build_dir" -G Ninja -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
ninja -C "$build_dir" "$target" | tail -n 20

corpus="$build_dir/corpus-$target"
rm -rf "$corpus"
mkdir -p "$corpus"
"$seed_writer" "$corpus" "$seed_kind"

# Leaks, crashes and hangs (over 10 s for one input) all fail the run.
"$build_dir/$target" "$corpus" -max_total_time="$seconds" -timeout=10 \
  -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 -artifact_prefix="$build_dir/$target-" 2>&1 | tail -n 15
