#pragma once
// What the sources of a mutation run call: a change is chosen while the program runs, by number.
#include <type_traits>
#include <utility>

extern "C" int kzm_mutant;                      // the one that is on; 0 for none
extern "C" unsigned char* kzm_mutants_reached;  // a 1 for each that was asked for

namespace kzm_mutation {

// Never on where the compiler computes: there the program stays as it is.
constexpr bool On(int id) {
    if (std::is_constant_evaluated()) return false;
    kzm_mutants_reached[id] = 1;
    return kzm_mutant == id;
}

// `a op NameOther{id} op b` is `a op b`, or `a other b` while the mutant is on.
#define KZM_BINARY(Name, op, other)                                                      \
    struct Name {                                                                        \
        int id;                                                                          \
    };                                                                                   \
    template <class A>                                                                   \
    struct Name##Left {                                                                  \
        A&& a;                                                                           \
        int id;                                                                          \
    };                                                                                   \
    template <class A>                                                                   \
    constexpr Name##Left<A> operator op(A&& a, Name mutation) {                          \
        return {std::forward<A>(a), mutation.id};                                        \
    }                                                                                    \
    template <class A, class B>                                                          \
    constexpr auto operator op(Name##Left<A> left, B&& b)                                \
        ->decltype(std::forward<A>(left.a) op std::forward<B>(b)) {                      \
        if (On(left.id))                                                                 \
            return static_cast<decltype(std::forward<A>(left.a) op std::forward<B>(b))>( \
                std::forward<A>(left.a) other std::forward<B>(b));                       \
        return std::forward<A>(left.a) op std::forward<B>(b);                            \
    }
KZM_BINARY(LtLe, <, <=)
KZM_BINARY(LtGe, <, >=)
KZM_BINARY(LeLt, <=, <)
KZM_BINARY(LeGt, <=, >)
KZM_BINARY(GtGe, >, >=)
KZM_BINARY(GtLe, >, <=)
KZM_BINARY(GeGt, >=, >)
KZM_BINARY(GeLt, >=, <)
KZM_BINARY(EqNe, ==, !=)
KZM_BINARY(NeEq, !=, ==)
KZM_BINARY(AddSub, +, -)
KZM_BINARY(SubAdd, -, +)
KZM_BINARY(MulAdd, *, +)
KZM_BINARY(DivMul, /, *)
KZM_BINARY(ModMul, %, *)
KZM_BINARY(ShlShr, <<, >>)
KZM_BINARY(ShrShl, >>, <<)
KZM_BINARY(AndOr, &, |)
KZM_BINARY(OrAnd, |, &)
KZM_BINARY(XorAnd, ^, &)

// `AssignNameOther(id, a) op= b`, the same for assignments.
#define KZM_ASSIGN(Name, op, other)                          \
    template <class A>                                       \
    struct Name##To {                                        \
        A&& a;                                               \
        int id;                                              \
        template <class B>                                   \
        constexpr void operator op(B&& b) {                  \
            if (On(id))                                      \
                std::forward<A>(a) other std::forward<B>(b); \
            else                                             \
                std::forward<A>(a) op std::forward<B>(b);    \
        }                                                    \
    };                                                       \
    template <class A>                                       \
    constexpr Name##To<A> Name(int id, A&& a) {              \
        return {std::forward<A>(a), id};                     \
    }
KZM_ASSIGN(AssignAddSub, +=, -=)
KZM_ASSIGN(AssignSubAdd, -=, +=)
KZM_ASSIGN(AssignMulAdd, *=, +=)
KZM_ASSIGN(AssignOrAnd, |=, &=)
KZM_ASSIGN(AssignAndOr, &=, |=)
KZM_ASSIGN(AssignXorAnd, ^=, &=)
KZM_ASSIGN(AssignShlShr, <<=, >>=)
KZM_ASSIGN(AssignShrShl, >>=, <<=)

template <class A>
struct Stepped {
    A&& a;
    int id;
    constexpr decltype(auto) operator++() {
        return On(id) ? --std::forward<A>(a) : ++std::forward<A>(a);
    }
    constexpr decltype(auto) operator--() {
        return On(id) ? ++std::forward<A>(a) : --std::forward<A>(a);
    }
};
template <class A>
constexpr Stepped<A> Step(int id, A&& a) {
    return {std::forward<A>(a), id};
}

}  // namespace kzm_mutation
