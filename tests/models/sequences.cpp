#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_List.impl.h>
#include <generics/KZMBasVector.h>
#include <models/model.h>

#include <algorithm>

namespace models {
namespace {

struct StringTwin : std::string {
    using std::string::operator=;
    std::size_t At(int pos) const { return std::clamp(pos, 0, static_cast<int>(size())); }
    const char* CStr() const { return c_str(); }
    void Append(const std::string& s) { append(s); }
    void Insert(int pos, const std::string& s, int n) { insert(At(pos), s, 0, std::max(n, 0)); }
    void Erase(int pos, int n) { erase(At(pos), std::max(n, 0)); }
    void Replace(int pos, int n, const std::string& s, int m) {
        replace(At(pos), std::max(n, 0), s, 0, m);
    }
    void RightTrim(const char* set) { erase(find_last_not_of(set) + 1); }
    void LeftTrim(const char* set) { erase(0, find_first_not_of(set)); }
    void ToLower() {
        for (char& c : *this) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    void Capitalize() {
        if (!empty()) front() = static_cast<char>(front() >= 'a' ? front() - 32 : front());
    }
    StringTwin Substr(int pos, int n) const { return {substr(At(pos), std::max(n, 0))}; }
    int Find(const char* s, int pos) const { return static_cast<int>(find(s, At(pos))); }
    int RFind(const char* s, int pos) const { return static_cast<int>(rfind(s, At(pos))); }
    int Compare(const StringTwin& s) const { return (*this > s) - (*this < s); }
};

struct StringModel {
    using Value = cow_String;
    using Twin = StringTwin;

    static bool Same(const Value& s, const Twin& t) {
        return std::string_view(s) == t && s.CStr()[s.Length()] == '\0' && s.Empty() == t.empty();
    }

    static void Step(Run<StringModel>& run) {
        Program& p = run.p;
        const int pos = p.Int(-4, 60), n = p.Int(-1, 14);
        const bool isOwn = p.OneIn(4);  // the source lies in the string itself
        const std::size_t from = run.ToEdit().At(pos + 1);
        const bool isInside = pos >= 0 && pos < static_cast<int>(run.ToEdit().size());
        const bool isShort = run.ToEdit().size() < 150;
        std::string text(p.Below(12), ' ');
        for (char& c : text) c = "abZ\xC4"[p.Below(4)];
        const auto source = [&](const auto& s) { return isOwn ? s.CStr() + from : text.c_str(); };
        run.OneOf([&](auto& s) { s.Append(source(s)); },
                  [&](auto& s) { isShort ? s += run.Other(s) : s; },
                  [&](auto& s) { s.Insert(pos, source(s), n); }, [&](auto& s) { s.Erase(pos, n); },
                  [&](auto& s) { s.Replace(pos, n, source(s), 7); },
                  [&](auto& s) { s = source(s); }, [&](auto& s) { isInside ? s[pos] = 'B' : 'B'; },
                  [](auto& s) { s.RightTrim("ab"); }, [](auto& s) { s.LeftTrim("ab"); },
                  [](auto& s) { s.ToLower(); }, [](auto& s) { s.Capitalize(); },
                  [&](auto& s) { s = s.Substr(pos, n); },
                  [&](auto& s) { return s.Find(source(s), pos); },
                  [&](auto& s) { return s.RFind(source(s), pos); },
                  [&](auto& s) { return s.Compare(run.Other(s)); });
    }
};

// Beside lists and vectors.
template <class T>
struct SequenceTwin : std::vector<T> {
    using Base = std::vector<T>;
    using Base::Base, Base::begin, Base::end, Base::insert, Base::erase;
    SequenceTwin(cow_ListConstruct, int) {}
    explicit SequenceTwin(const T& v) : Base(1, v) {}

    int Length() const { return static_cast<int>(this->size()); }
    const T& ConstGet(int i) const { return begin()[i]; }
    T& Get(int i) { return begin()[i]; }
    const T* Data() const { return this->data(); }
    int Find(const T& v) const {
        const auto at = std::find(begin(), end(), v);
        return at == end() ? -1 : static_cast<int>(at - begin());
    }
    int FindMember(const T& v) const { return Find(v); }

    void Append(T v) { this->push_back(v); }
    void Append(const T* a, int n) { Concatenate(SequenceTwin(a, a + n)); }
    void AppendUnlessMember(T v) { Find(v) < 0 ? Append(v) : void(); }
    void Concatenate(const SequenceTwin& other) { insert(end(), other.begin(), other.end()); }
    void Prepend(T v) { insert(begin(), v); }
    void Insert(int i, T v) { insert(begin() + i, v); }
    void InsertIndex(int i, T v) { Insert(i, v); }
    void Remove(int i, int n) { erase(begin() + i, begin() + i + n); }
    void RemoveIndex(int i) { Remove(i, 1); }
    void RemoveMember(T v) { Remove(Find(v), 1); }
    void Pop() { this->pop_back(); }
    void Fill(int n, T v) { this->assign(n, v); }
    void SetFromArray(const T* a, int n) { *this = SequenceTwin(a, a + n); }
    void Resize(int n) { Remove(std::min(n, Length()), std::max(Length() - n, 0)); }
    void Resize(int n, T v) { this->resize(n, v); }
    void Reserve(int) {}
    void Compact() {}
    void Sort() { std::sort(begin(), end()); }
    SequenceTwin Slice(int i, int n) const { return {begin() + i, begin() + i + n}; }
    SequenceTwin Difference(const SequenceTwin& other) const {
        SequenceTwin rest = *this;
        std::erase_if(rest, [&](const T& v) { return other.Find(v) >= 0; });
        return rest;
    }
};

template <class T>
struct ListModel {
    using Value = cow_List<T>;
    using Twin = SequenceTwin<T>;
    static constexpr int kMost = std::same_as<T, Boxed> ? 150 : 500;

    static bool Same(const Value& list, const Twin& twin) {
        return list.Length() == twin.Length() && Equal(list, twin);
    }
    // Only elements whose own copying fails can stop an edit half way.
    static Twin ReadBack(const Value& list) requires std::same_as<T, Boxed> {
        return Twin(list.begin(), list.end());
    }

    static void Step(Run<ListModel>& run) {
        Program& p = run.p;
        const int length = run.ToEdit().Length(), i = static_cast<int>(p.Below(unsigned(length)));
        const int own = p.Int(0, 3 * length) - 1;
        const bool isOwn = own >= 0 && own < length;  // an element of the list itself
        const int size = p.OneIn(4) ? 300 : p.Int(0, length);
        const T made = As<T>(p.Int(0, 9));
        const auto v = [&](const auto& l) -> const T& { return isOwn ? l.ConstGet(own) : made; };
        if (length > kMost) return run.Both([&](auto& l) { l.Resize(i); });
        if (length > 0 && p.OneIn(2))
            return run.OneOf([&](auto& l) { l.Get(i) = made; },

                             [&](auto& l) { l.RemoveIndex(i); }, [](auto& l) { l.Pop(); },
                             [&](auto& l) { l.RemoveMember(l.ConstGet(i)); },
                             [&](auto& l) { l = l.Slice(i / 4, l.Length() - i / 4); },
                             [](auto& l) { return l.FindMember(l.ConstGet(l.Length() - 1)); });
        if (p.OneIn(16))  // seldom, for long lists
            return run.OneOf(
                [&](auto& l) { l.Fill(i, v(l)); }, [&](auto& l) { l.SetFromArray(&v(l), 1); },
                [&]<class L>(L& l) { l = L(cow_ListConstruct(), size); },
                [&](auto& l) { l = l.Difference(run.Other(l)); }, [&](auto& l) { l.Resize(size); },
                [&]<class L>(L& l) { l = l.Difference(L(v(l))); },
                [&]<class L>(L& l) { l = L(run.Other(l).begin(), run.Other(l).end()); });
        const auto prepend = [&](auto& l) { l.Prepend(v(l)); };
        const auto append = [&](auto& l) { l.Append(v(l)); };
        if (!isOwn && p.OneIn(4))
            for (unsigned n = p.Below(48), back = p.Below(2); n > 0; --n) {
                const T each = As<T>(p.Int(0, 9));
                run.Both([&](auto& l) { back ? void(l.Append(each)) : void(l.Prepend(each)); });
            }
        run.OneOf(
            append, prepend, [&](auto& l) { l.InsertIndex(i, v(l)); },
            [&](auto& l) { l.AppendUnlessMember(v(l)); },
            [&](auto& l) { l.Concatenate(run.Other(l)); }, [](auto& l) { l.Sort(); });
    }
};

struct VectorModel {
    using T = cow_String;
    using Value = KZMBasVector<T>;
    using Twin = SequenceTwin<T>;

    static bool Same(const Value& v, const Twin& t) {
        return v.Size() <= v.Capacity() && Equal(v, t);
    }

    static void Step(Run<VectorModel>& run) {
        Program& p = run.p;
        const int length = run.ToEdit().Length(), at = static_cast<int>(p.Below(unsigned(length))),
                  n = std::min(p.Int(0, 3), length - at), code = p.Int(0, 99);
        const bool isOwn = length && p.OneIn(2);
        const T made = As<T>(code);
        const auto v = [&](const auto& c) -> const T& { return isOwn ? c.Data()[at] : made; };
        run.OneOf([&](auto& c) { c.Append(v(c)); }, [&](auto& c) { c.Insert(at, v(c)); },
                  [&](auto& c) { c.Remove(at, n); }, [&](auto& c) { c.Append(c.Data() + at, n); },
                  [&](auto& c) { c.Resize(code / 4, v(c)); },
                  [&](auto& c) { code % 2 ? c.Compact() : c.Reserve(code); },
                  [&](auto& c) { return c.Find(made); });
    }
};

// Arrays of one and of two dimensions, whose second one is that of the twin.
template <class A>
struct ArrayModel {
    using Value = A;
    using T = typename A::value_type;
    using Twin = SequenceTwin<T>;
    static constexpr int kRows = requires(A a) { a.Rows(); }
    ? 3 : 1;

    template <class Array>
    static Array Made(int columns, const T& v) {
        if constexpr (std::is_same_v<Array, Twin>)
            return Twin(kRows * std::max(columns, 0), v);
        else if constexpr (kRows > 1)
            return A(kRows, columns, v);
        else
            return A(columns, v);
    }
    static std::pair<Value, Twin> New(unsigned) { return {Made<A>(0, T()), Twin()}; }
    static T& At(auto& a, int i, [[maybe_unused]] int columns) {
        if constexpr (requires { a.Cols(); })
            return a.Get(i / columns, i % columns);
        else
            return a.Get(i);
    }

    static bool Same(const Value& a, const Twin& t) {
        if constexpr (kRows > 1)
            if (a.Rows() != kRows || a.Cols() != t.Length() / kRows) return false;
        return Equal(a, t);
    }

    static void Step(Run<ArrayModel>& run) {
        Program& p = run.p;
        const int columns = p.Int(-1, 6), size = run.ToEdit().Length();
        const int i = static_cast<int>(p.Below(size)), from = static_cast<int>(p.Below(size));
        const bool isOwn = size && p.OneIn(2);
        const T made = As<T>(p.Int(0, 9));
        const auto v = [&](const auto& a) -> const T& { return isOwn ? a.begin()[from] : made; };
        const auto shape = [&]<class Array>(Array& a) { a = Made<Array>(columns, v(a)); };
        const auto write = [&](auto& a) {
            T& cell = At(a, i, size / kRows);
            cell = v(a);
        };
        size ? run.OneOf(shape, write, write, write) : run.Both(shape);
    }
};

}  // namespace

std::vector<Model> Sequences() {
    return {
        {"String", 2037359666564602846u, Run<StringModel>::Of},
        {"ListOfInt", 17931418331939303682u, Run<ListModel<int>>::Of},
        {"ListOfDouble", 14435612045041795332u, Run<ListModel<double>>::Of},
        {"ListOfString", 12989434470234003002u, Run<ListModel<cow_String>>::Of},
        {"ListOfBoxed", 13100461283515355563u, Run<ListModel<Boxed>>::Of},
        {"FixedArrayOfDouble", 14649764833696425593u, Run<ArrayModel<cow_FixedArray<double>>>::Of},
        {"FixedArrayOfString", 7822925225923757920u,
         Run<ArrayModel<cow_FixedArray<cow_String>>>::Of},
        {"Array2DOfFloat", 7280852699597395746u, Run<ArrayModel<cow_2DArray<float>>>::Of},
        {"Array2DOfString", 2714893617445451176u, Run<ArrayModel<cow_2DArray<cow_String>>>::Of},
        {"Vector", 6726373562282933056u, Run<VectorModel>::Of}};
}

}  // namespace models
