# Shell functions that configure, build and test a preset; source this file from a bash script that
# stands in the top folder.

build_packages=(cmake ninja-build g++ ccache python3)
test_packages=(libgtest-dev gfortran mpich gdb libeigen3-dev abigail-tools dpkg-dev file pkg-config)
example_packages=(libgmsh-dev libeigen3-dev libcairo2-dev libmetis-dev libmpich-dev pkg-config)
fuzz_packages=(clang-14 libclang-rt-14-dev)
peer_packages=(libabsl-dev qtbase5-dev robin-map-dev libjudy-dev libroaring-dev libboost-dev)

# The test programs that are enough to run all code of the libraries.
native_tests=(models_test siblings_test cow_test omi_test runtime_test process_test files_test
    errors_test interop_test eigen_test docs_test docs_fortran dll_test load_test
    omi_fortran_callers)

# With the compiler cache, later builds and other clones share what is the same.
use_ccache() {
    command -v ccache >/dev/null || return 0
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
}

# build_preset NAME [TARGET...]
build_preset() {
    local preset=$1 log
    shift
    use_ccache
    mkdir -p build
    log=build/configure-$preset.log
    : >"$log" || return
    echo "== configuring $preset"
    cmake --preset "$preset" >"$log" 2>&1 || { cat "$log"; return 1; }
    echo "== building $preset"
    SECONDS=0
    cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"}
    echo "== built $preset in $SECONDS s"
}

# build_bench TARGET...: benchmarks as users build, with the release preset in a folder of its own.
build_bench() {
    local log=build/configure-bench.log
    use_ccache
    mkdir -p build
    : >"$log" || return
    echo "== configuring benchmarks"
    cmake --preset release -B build/bench -DKZM_BUILD_BENCH=ON -DKZM_BUILD_TESTS=OFF \
        -DKZM_BUILD_EXAMPLES=OFF >"$log" 2>&1 || { cat "$log"; return 1; }
    grep '^-- bench: ' "$log" || true
    echo "== building benchmarks"
    SECONDS=0
    cmake --build build/bench --parallel "$(nproc)" --target "$@"
    echo "== built benchmarks in $SECONDS s"
}

# run_tests PRESET [ctest options]; what ctest says is also kept in build/PRESET/ctest.log.
run_tests() {
    local preset=$1
    shift
    echo "== testing $preset"
    SECONDS=0
    ctest --preset "$preset" --output-junit tests.xml "$@" | tee "build/$preset/ctest.log"
    echo "== tested $preset in $SECONDS s; results: build/$preset/tests.xml"
}

# test_summary PRESET...: the closing lines of ctest for each of them once more.
test_summary() {
    local preset
    for preset in "$@"; do
        if [ -e "build/$preset/ctest.log" ]; then
            echo "== $preset"
            sed -n '/% tests passed/,$p' "build/$preset/ctest.log"
        fi
    done
}
