// Tables by address with as many buckets as entries, as the interface has them.
#include <omi/HashTable.h>

#include <vector>

#include "support/keyed.h"
#include "support/keys.h"

namespace {

// A table that knows how many entries will come.
template <class Map>
class Sized : public Map {
public:
    static constexpr const char* kWho = bench::kWho<Map>;
    explicit Sized(std::size_t n) {
        if constexpr (requires { this->Reserve(n); }) this->Reserve(n);
    }
};
template <>
class Sized<HashTable<void*, unsigned>> : public HashTable<void*, unsigned> {
public:
    static constexpr const char* kWho = "HashTable";
    explicit Sized(std::size_t n) : HashTable<void*, unsigned>(static_cast<unsigned>(n)) {}
    unsigned At(void* key) const {
        unsigned value = 0;
        LookUp(key, value);
        return value;
    }
};

// The chains that the interface prescribes, by hand: as many buckets as entries, these in one array
// in the order of their coming. With this library's hash, and with one that does not mix.
template <bool kMixed>
class Chains {
public:
    static constexpr const char* kWho = kMixed ? "floor::chains" : "floor::chains(unmixed)";
    explicit Chains(std::size_t n) : m_buckets(n) { m_entries.reserve(n); }
    void Insert(void* key, unsigned value) {
        Entry*& front = m_buckets[BucketOf(key)];
        front = &m_entries.emplace_back(Entry{key, value, front});
    }
    unsigned At(void* key) const {
        const Entry* entry = m_buckets[BucketOf(key)];
        while (entry->key != key) entry = entry->next;
        return entry->value;
    }

private:
    struct Entry {
        void* key;
        unsigned value;
        Entry* next;
    };
    std::size_t BucketOf(void* key) const {
        if (kMixed) return HashValue(key, static_cast<unsigned>(m_buckets.size()));
        return reinterpret_cast<std::uintptr_t>(key) / 16 % m_buckets.size();
    }

    std::vector<Entry*> m_buckets;
    std::vector<Entry> m_entries;
};

// Addresses of objects of 48 bytes, in no order.
std::vector<void*> Addresses(const benchmark::State& state) {
    static std::vector<char> s_objects(48u << 20);
    std::vector<void*> addresses(bench::Count(state));
    for (std::size_t i = 0; i < addresses.size(); ++i) addresses[i] = s_objects.data() + 48 * i;
    return bench::Shuffled(addresses);
}

template <class Map>
void Fill(Map& map, const std::vector<void*>& keys) {
    unsigned n = 0;
    for (void* const key : keys) map.Insert(key, ++n);
}

// Entering objects by their addresses, in no order.
template <class Map>
void AddressInsert(benchmark::State& state) {
    const std::vector<void*> keys = Addresses(state);
    unsigned last = 0;
    for (auto _ : state) {
        Map map(keys.size());
        Fill(map, keys);
        last = map.At(keys.back());
    }
    bench::Result(state, last);
    bench::EachOf(state, keys.size());
}

// Finding objects by their addresses, in no order.
template <class Map>
void AddressFind(benchmark::State& state) {
    const std::vector<void*> keys = Addresses(state);
    Map map(keys.size());
    Fill(map, keys);
    const std::vector<void*> asked = bench::Shuffled(keys, 2);
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (void* const key : asked) sum += map.At(key);
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, keys.size());
}

template <class Map>
using SizedUnlessMissing =
    std::conditional_t<std::is_same_v<Map, bench::Missing>, bench::Missing, Sized<Map>>;
template <class... Maps>
using AllSized = bench::Types<SizedUnlessMissing<Maps>...>;
using Tables = AllSized<HashTable<void*, unsigned>, bench::StdHash<void*, unsigned>,
                        bench::AbslHash<void*, unsigned>, bench::RobinHash<void*, unsigned>,
                        bench::QtHash<void*, unsigned>, bench::JudyL<void*, unsigned>>;

void Objects(benchmark::internal::Benchmark* b) { b->ArgName("objects")->Arg(1000)->Arg(100000); }
KZM_WORKLOAD(AddressInsert, Objects, Tables);
KZM_WORKLOAD(AddressFind, Objects, Tables, Chains<true>, Chains<false>);

}  // namespace
