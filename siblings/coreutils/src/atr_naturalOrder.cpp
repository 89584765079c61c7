#include <coreutils/atr_naturalOrder.h>

#include <atomic>
#include <cstddef>
#include <cstring>

namespace {

constinit std::atomic<int> g_naturalOrder{0};

int Sign(int order) { return (order > 0) - (order < 0); }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t DigitRun(const char* s) {
    std::size_t n = 0;
    while (IsDigit(s[n])) ++n;
    return n;
}

// Compares the numbers at both places and moves past them.
int CompareNumbers(const char*& a, const char*& b) {
    while (*a == '0') ++a;
    while (*b == '0') ++b;
    const std::size_t digitsA = DigitRun(a);
    const std::size_t digitsB = DigitRun(b);
    if (digitsA != digitsB) return digitsA < digitsB ? -1 : 1;
    const int order = Sign(std::memcmp(a, b, digitsA));
    a += digitsA;
    b += digitsB;
    return order;
}

}  // namespace

int strnatcmp(const char* a, const char* b) {
    const char* const textA = a ? a : "";
    const char* const textB = b ? b : "";
    a = textA;
    b = textB;
    while (*a && *b) {
        if (IsDigit(*a) && IsDigit(*b)) {
            if (const int order = CompareNumbers(a, b)) return order;
        } else if (*a != *b) {
            break;
        } else {
            ++a;
            ++b;
        }
    }
    if (*a == *b) return Sign(std::strcmp(textA, textB));
    return static_cast<unsigned char>(*a) < static_cast<unsigned char>(*b) ? -1 : 1;
}

int atr_getNaturalOrder() { return g_naturalOrder.load(std::memory_order_relaxed); }
void atr_setNaturalOrder(int on) { g_naturalOrder.store(on, std::memory_order_relaxed); }
