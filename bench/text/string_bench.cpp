// The text type of the interface beside std::string: names like Set-123 and longer texts.
#include <benchmark/benchmark.h>
#include <cow/cow_String.h>

#include <string>
#include <vector>

namespace {

std::string Name(const benchmark::State& state) {
    return std::string(static_cast<size_t>(state.range(0)) - 3, 'x') + "123";
}

const char* Bytes(const cow_String& text) { return text.CStr(); }
const char* Bytes(const std::string& text) { return text.c_str(); }

// What does passing a text by value cost?
template <class Text>
void BM_Copy(benchmark::State& state) {
    const Text original(Name(state).c_str());
    for (auto _ : state) {
        Text copy = original;
        benchmark::DoNotOptimize(Bytes(copy));
    }
}

template <class Text>
void BM_Make(benchmark::State& state) {
    const std::string name = Name(state);
    for (auto _ : state) {
        Text text(name.c_str());
        benchmark::DoNotOptimize(Bytes(text));
    }
}

// Copying a text and appending to the copy: the first write makes it private.
template <class Text>
void BM_AppendToCopy(benchmark::State& state) {
    const Text original(Name(state).c_str());
    for (auto _ : state) {
        Text copy = original;
        copy += "-suffix";
        benchmark::DoNotOptimize(Bytes(copy));
    }
}

// Comparing equal texts that do not share, as in a look-up by name.
template <class Text>
void BM_Equal(benchmark::State& state) {
    const Text a(Name(state).c_str());
    const Text b(Name(state).c_str());
    for (auto _ : state) {
        benchmark::DoNotOptimize(Bytes(a));
        benchmark::DoNotOptimize(a == b);
    }
}

void Lengths(benchmark::internal::Benchmark* b) { b->Arg(7)->Arg(15)->Arg(16)->Arg(100); }

BENCHMARK(BM_Copy<cow_String>)->Apply(Lengths);
BENCHMARK(BM_Copy<std::string>)->Apply(Lengths);
BENCHMARK(BM_Make<cow_String>)->Apply(Lengths);
BENCHMARK(BM_Make<std::string>)->Apply(Lengths);
BENCHMARK(BM_AppendToCopy<cow_String>)->Apply(Lengths);
BENCHMARK(BM_AppendToCopy<std::string>)->Apply(Lengths);
BENCHMARK(BM_Equal<cow_String>)->Apply(Lengths);
BENCHMARK(BM_Equal<std::string>)->Apply(Lengths);

}  // namespace
