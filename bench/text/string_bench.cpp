// The text type of the interface beside std::string; an argument is a length in bytes.
#include <cow/cow_String.h>

#include <cstring>
#include <string>
#include <utility>

#include "support/started.h"
#include "support/workload.h"
#ifdef KZM_BENCH_QT
#include <QByteArray>
#endif

template <>
constexpr const char* bench::kWho<cow_String> = "cow_String";
template <>
constexpr const char* bench::kWho<std::string> = "std::string";
#ifdef KZM_BENCH_QT
template <>
constexpr const char* bench::kWho<QByteArray> = "Qt::QByteArray";
#endif

namespace {

const bench::Started g_started;

std::string Name(const benchmark::State& state) {
    return std::string(static_cast<size_t>(state.range(0)) - 3, 'x') + "123";
}

const char* Bytes(const cow_String& text) { return text.CStr(); }
const char* Bytes(const std::string& text) { return text.c_str(); }

template <class Text>
std::uint64_t Length(const Text& text) {
    return std::string_view(text).size();
}
#ifdef KZM_BENCH_QT
using QtText = QByteArray;
const char* Bytes(const QtText& text) { return text.constData(); }
std::uint64_t Length(const QtText& text) { return static_cast<std::uint64_t>(text.size()); }
#else
using QtText = bench::Missing;
#endif

// What a text comes down to: the length found out, one block out of a place that keeps one and back
// into it, three numbers before the bytes, and these copied.
class Bare {
public:
    static constexpr const char* kWho = "floor::record";
    explicit Bare(const char* s) : Bare(s, static_cast<int>(std::strlen(s)), nullptr, 0) {}
    Bare(const Bare& other) : m_record(other.m_record) { ++m_record->m_count; }
    Bare& operator=(const Bare&) = delete;
    ~Bare() {
        if (m_record->m_count != 1)
            --m_record->m_count;
        else if (s_place)
            delete m_record;
        else
            s_place = m_record;
    }
    Bare& operator+=(const Bare& s) { return Add(s.CStr(), s.Length()); }
    Bare& operator+=(const char* s) { return Add(s, static_cast<int>(std::strlen(s))); }
    const char* CStr() const { return m_record->m_text; }
    int Length() const { return m_record->m_length; }

private:
    struct Record {
        int m_count;
        int m_capacity;
        int m_length;
        char m_text[500];
    };

    Bare(const char* s, int n, const char* t, int m) {
        m_record = s_place ? std::exchange(s_place, nullptr) : new Record;
        m_record->m_count = 1;
        m_record->m_capacity = sizeof m_record->m_text - 1;
        std::memcpy(m_record->m_text, s, static_cast<std::size_t>(n));
        Write(n, t, m);
    }
    Bare& Add(const char* s, int n) {
        if (m_record->m_count == 1 && n <= m_record->m_capacity - Length()) {
            Write(Length(), s, n);
        } else {
            Bare both(CStr(), Length(), s, n);
            std::swap(m_record, both.m_record);
        }
        return *this;
    }
    void Write(int at, const char* s, int n) {
        if (n > 0) std::memcpy(m_record->m_text + at, s, static_cast<std::size_t>(n));
        m_record->m_text[at + n] = '\0';
        m_record->m_length = at + n;
    }

    static inline constinit Record* s_place = nullptr;

    Record* m_record;
};
const char* Bytes(const Bare& text) { return text.CStr(); }
std::uint64_t Length(const Bare& text) { return static_cast<std::uint64_t>(text.Length()); }

// What does passing a text by value cost?
template <class Text>
void Copy(benchmark::State& state) {
    const Text original(Name(state).c_str());
    std::uint64_t length = 0;
    for (auto _ : state) {
        const Text copy = original;
        benchmark::DoNotOptimize(Bytes(copy));
        length = Length(copy);
    }
    bench::Result(state, length);
}

template <class Text>
void Make(benchmark::State& state) {
    const std::string name = Name(state);
    std::uint64_t length = 0;
    for (auto _ : state) {
        const Text text(name.c_str());
        benchmark::DoNotOptimize(Bytes(text));
        length = Length(text);
    }
    bench::Result(state, length);
}

// Two texts added to a copy, as when a name is put together from parts.
template <class Text>
void AppendTwo(benchmark::State& state) {
    const Text original(Name(state).c_str());
    std::uint64_t length = 0;
    for (auto _ : state) {
        Text copy = original;
        copy += original;
        copy += "-suffix";
        benchmark::DoNotOptimize(Bytes(copy));
        length = Length(copy);
    }
    bench::Result(state, length);
}

// Comparing equal texts that do not share, as in a look-up by name.
template <class Text>
void Equal(benchmark::State& state) {
    const Text a(Name(state).c_str());
    const Text b(Name(state).c_str());
    bool equal = false;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Bytes(a));
        benchmark::DoNotOptimize(equal = a == b);
    }
    bench::Result(state, equal);
}

void Lengths(benchmark::internal::Benchmark* b) {
    b->ArgName("bytes")->Arg(7)->Arg(15)->Arg(16)->Arg(100);
}

KZM_WORKLOAD(Copy, Lengths, cow_String, std::string, QtText);
KZM_WORKLOAD(Make, Lengths, cow_String, std::string, QtText, Bare);
KZM_WORKLOAD(AppendTwo, Lengths, cow_String, std::string, QtText, Bare);
KZM_WORKLOAD(Equal, Lengths, cow_String, std::string, QtText);

}  // namespace
