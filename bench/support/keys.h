// Keys as models have them.
#pragma once

#include <cow/cow_String.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/workload.h"
#ifdef KZM_BENCH_QT
#include <QString>
#endif

namespace bench {

// Node numbers, ascending: dense from 1 where `ranges` is 1, else as many equal clusters of
// consecutive numbers, spread over the numbers of 31 bits.
inline std::vector<int> NodeNumbers(std::size_t count, int ranges) {
    std::vector<int> numbers;
    numbers.reserve(count);
    const std::size_t length = count / static_cast<std::size_t>(ranges);
    for (std::size_t i = 0; i < count; ++i) {
        const int range = static_cast<int>(i / length);
        const int first = range * (ranges == 1 ? 0 : 2140000000 / ranges);
        numbers.push_back(1 + first + static_cast<int>(i % length));
    }
    return numbers;
}

template <class T>
std::vector<T> Shuffled(std::vector<T> keys, unsigned seed = 1) {
    std::shuffle(keys.begin(), keys.end(), std::minstd_rand(seed));
    return keys;
}

// A name such as Set-123, or the number itself where the key is one.
template <class K>
K KeyOf(int number) {
    if constexpr (std::is_arithmetic_v<K>) {
        return static_cast<K>(number);
    } else {
        const std::string name = "Set-" + std::to_string(number);
        return K(name.c_str());
    }
}

// The keys of the numbers from 1 on, in no order.
template <class K>
std::vector<K> KeysInNoOrder(std::size_t count) {
    std::vector<K> keys;
    keys.reserve(count);
    for (const int number : Shuffled(NodeNumbers(count, 1))) keys.push_back(KeyOf<K>(number));
    return keys;
}

// What `make` returns for the arguments (n, second), made once for all runs of a benchmark and kept
// until the program ends: large containers take longer to fill than to measure. A workload may
// change it as long as it ends as it began.
template <class Make>
auto& Once(std::int64_t n, std::int64_t second, Make make) {
    using T = std::invoke_result_t<Make>;
    static auto& made = *new std::map<std::pair<std::int64_t, std::int64_t>, std::unique_ptr<T>>;
    std::unique_ptr<T>& place = made[{n, second}];
    if (!place) place.reset(new T(make()));
    return *place;
}
template <class Make>
auto& Once(const benchmark::State& state, Make make) {
    return Once(state.range(0), 0, make);
}

inline std::size_t Count(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

}  // namespace bench
