#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_List.impl.h>
#include <generics/KZMBasVector.h>
#include <models/model.h>

#include <algorithm>

namespace models {
namespace {

struct StringModel {
    using Value = cow_String;
    using Twin = std::string;

    static bool Same(const Value& s, const Twin& t) {
        return std::string_view(s) == t && s.CStr()[s.Length()] == '\0' && s.Empty() == t.empty();
    }

    static void Step(Edit<StringModel>& edit) {
        using S = cow_String;
        using T = std::string;
        Program& p = edit.p;
        const int pos = p.Int(-4, 60), n = p.Int(-1, 14), end = static_cast<int>(edit.twin.size());
        const auto from = static_cast<std::size_t>(std::clamp(pos, 0, end));
        const auto count = static_cast<std::size_t>(std::max(n, 0));
        const bool own = p.OneIn(4);  // the source lies in the string itself
        T text = own ? edit.twin.substr(from) : T(p.Below(12), ' ');
        for (char& c : text) c = own ? c : "abZ\xC4"[p.Below(4)];
        const auto source = [&](const S& s) { return own ? s.CStr() + from : text.c_str(); };
        const T more = end < 150 ? edit.otherTwin : T();
        const auto sign = [](int order) { return (order > 0) - (order < 0); };
        edit.OneOf(
            Do{[&](S& s) { s.Append(source(s)); }, [&](T& t) { t += text; }},
            Do{[&](S& s) { end < 150 ? s += edit.other : s; }, [&](T& t) { t += more; }},
            Do{[&](S& s) { s.Insert(pos, source(s), n); },
               [&](T& t) { t.insert(from, text, 0, count); }},
            Do{[&](S& s) { s.Erase(pos, n); }, [&](T& t) { t.erase(from, count); }},
            Do{[&](S& s) { s.Replace(pos, n, source(s), 7); },
               [&](T& t) { t.replace(from, count, text, 0, 7); }},
            Do{[&](S& s) { s = source(s); }, [&](T& t) { t = text; }},
            Do{[&](S& s) { pos >= 0 && pos < end ? s[pos] = 'B' : 'B'; },
               [&](T& t) { pos >= 0 && pos < end ? t[from] = 'B' : 'B'; }},
            Do{[](S& s) { s.RightTrim("ab"); },
               [](T& t) { t.erase(t.find_last_not_of("ab") + 1); }},
            Do{[](S& s) { s.LeftTrim("ab"); }, [](T& t) { t.erase(0, t.find_first_not_of("ab")); }},
            Do{[](S& s) { s.ToLower(); },
               [](T& t) {
                   for (char& c : t) c = c == 'A' ? 'a' : c == 'B' ? 'b' : c == 'Z' ? 'z' : c;
               }},
            Do{[](S& s) { s.Capitalize(); },
               [](T& t) {
                   if (!t.empty())
                       t[0] = t[0] == 'a' ? 'A' : t[0] == 'b' ? 'B' : t[0] == 'z' ? 'Z' : t[0];
               }},
            Do{[&](S& s) { s = s.Substr(pos, n); }, [&](T& t) { t = t.substr(from, count); }},
            Do{[&](S& s) { return s.Find(source(s), pos); },
               [&](T& t) { return static_cast<int>(t.find(text, from)); }},
            Do{[&](S& s) { return s.RFind(source(s), pos); },
               [&](T& t) { return static_cast<int>(t.rfind(text, from)); }},
            Do{[&](S& s) { return s.Compare(edit.other); },
               [&](T& t) { return sign(t.compare(edit.otherTwin)); }});
    }
};

// Whether the elements stand for the numbers of the twin.
template <class T>
bool Equal(const auto& elements, const std::vector<int>& twin) {
    return std::equal(elements.begin(), elements.end(), twin.begin(), twin.end(),
                      [](const T& element, int code) { return element == As<T>(code); });
}

template <class T>
struct ListModel {
    using Value = cow_List<T>;
    using Twin = std::vector<int>;

    static bool Same(const Value& list, const Twin& twin) {
        return list.Length() == static_cast<int>(twin.size()) && Equal<T>(list, twin);
    }
    // Only elements whose own copying fails can stop an edit half way.
    static Twin ReadBack(const Value& list) requires requires(T t) { t.Code(); }
    {
        Twin twin;
        for (const T& each : list) twin.push_back(each.Code());
        return twin;
    }

    static void Step(Edit<ListModel>& edit) {
        using L = Value;
        using M = Twin;
        Program& p = edit.p;
        const unsigned length = static_cast<unsigned>(edit.twin.size());
        const int i = static_cast<int>(p.Below(length)), own = p.Int(0, 3 * int(length)) - 1;
        const bool isOwn = own >= 0 && own < int(length);  // an element of the list itself
        const int code = isOwn ? edit.twin.begin()[own] : p.Int(0, 9);
        const unsigned size = p.OneIn(4) ? 300 : p.Below(length + 1);
        const T made = As<T>(code);
        const auto v = [&](const L& l) -> const T& { return isOwn ? l.ConstGet(own) : made; };
        if (length > 500)
            return edit.Both(Do{[&](L& l) { l.Resize(i); }, [&](M& m) { m.resize(unsigned(i)); }});
        if (length > 0 && p.OneIn(2))
            return edit.OneOf(
                Do{[&](L& l) { l.Get(i) = made; }, [&](M& m) { m.begin()[i] = code; }},
                Do{[&](L& l) { l.SetFromArray(&l.ConstGet(i), 1); },
                   [&](M& m) { m = M(1, m.begin()[i]); }},
                Do{[&](L& l) { l.RemoveIndex(i); }, [&](M& m) { m.erase(m.begin() + i); }},
                Do{[](L& l) { l.Pop(); }, [](M& m) { m.pop_back(); }},
                Do{[&](L& l) { l.RemoveMember(l.ConstGet(i)); },
                   [&](M& m) { m.erase(std::find(m.begin(), m.end(), m.begin()[i])); }},
                Do{[&](L& l) { l = l.Slice(i / 4, l.Length() - i / 4); },
                   [&](M& m) { m.erase(m.begin(), m.begin() + i / 4); }},
                Do{[](L& l) {
                       int n;
                       T* const a = l.GetCArray(n);
                       const int found = l.FindMember(a[n - 1]);
                       l.ReleaseCArray(a, n);
                       return found;
                   },
                   [](M& m) {
                       return static_cast<int>(std::find(m.begin(), m.end(), m.back()) - m.begin());
                   }});
        const auto prepend =
            Do{[&](L& l) { l.Prepend(v(l)); }, [&](M& m) { m.insert(m.begin(), code); }};
        const auto append = Do{[&](L& l) { l.Append(v(l)); }, [&](M& m) { m.push_back(code); }};
        if (!isOwn && p.OneIn(4))
            for (unsigned n = p.Below(48), back = p.Below(2); n > 0; --n)
                back ? edit.Both(append) : edit.Both(prepend);
        edit.OneOf(
            append, prepend,
            Do{[&](L& l) { l.InsertIndex(i, v(l)); }, [&](M& m) { m.insert(m.begin() + i, code); }},
            Do{[&](L& l) { l.AppendUnlessMember(v(l)); },
               [&](M& m) {
                   if (!std::count(m.begin(), m.end(), code)) m.push_back(code);
               }},
            Do{[&](L& l) { l.Concatenate(edit.other); },
               [&](M& m) {
                   const M tail = edit.otherTwin;
                   m.insert(m.end(), tail.begin(), tail.end());
               }},
            Do{[&](L& l) { l.Fill(i, v(l)); }, [&](M& m) { m.assign(unsigned(i), code); }},
            Do{[&](L& l) { l = L(cow_ListConstruct(), int(size)); }, [](M& m) { m.clear(); }},
            Do{[&](L& l) { l.Resize(int(size)); },
               [&](M& m) { m.resize(std::min<std::size_t>(m.size(), size)); }},
            Do{[](L& l) { l.Sort(); }, [](M& m) { std::sort(m.begin(), m.end()); }},
            Do{[&](L& l) { l = l.Difference(edit.other); },
               [&](M& m) {
                   std::erase_if(m, [&, o = edit.otherTwin](int c) {
                       return std::count(o.begin(), o.end(), c) > 0;
                   });
               }},
            Do{[&](L& l) { l = l.Difference(L(v(l))); }, [&](M& m) { std::erase(m, code); }},
            Do{[&](L& l) { l = L(edit.other.begin(), edit.other.end()); },
               [&](M& m) { m = M(edit.otherTwin); }});
    }
};

// Arrays of one and of two dimensions; one row stands for the first.
template <class A>
struct ArrayModel {
    struct Twin {
        int rows = 1, columns = 0;
        std::vector<int> cells;
        bool operator==(const Twin&) const = default;
    };
    using Value = A;
    using T = typename A::value_type;
    static constexpr bool kRows = requires(const A& a) { a.Rows(); };

    static A Made(int rows, int columns, const T& v) {
        if constexpr (kRows)
            return A(rows, columns, v);
        else
            return A(columns, v);
    }
    static T& At(A& a, int columns, int i) {
        if constexpr (kRows)
            return a.Get(i / columns, i % columns);
        else
            return a.Get(i);
    }
    static std::pair<Value, Twin> New(unsigned) { return {Made(1, 0, T()), Twin()}; }

    static bool Same(const Value& a, const Twin& t) {
        int rows = 1, columns = static_cast<int>(a.end() - a.begin());
        if constexpr (kRows) rows = a.Rows(), columns = a.Cols();
        return rows == t.rows && columns == t.columns && Equal<T>(a, t.cells);
    }

    static void Step(Edit<ArrayModel>& edit) {
        Program& p = edit.p;
        const int rows = kRows ? p.Int(-1, 4) : 1, columns = p.Int(-1, 6), code = p.Int(0, 9);
        const auto size = static_cast<unsigned>(edit.twin.cells.size());
        const unsigned i = p.Below(size), from = p.Below(size);
        const T made = As<T>(code);
        const bool own = size && p.OneIn(2);
        const int value = own ? edit.twin.cells[from] : code;
        const auto v = [&](const A& a) -> const T& { return own ? a.begin()[from] : made; };
        const auto shape = Do{[&](A& a) { a = Made(rows, columns, v(a)); },
                              [&](Twin& t) {
                                  t = {std::max(rows, 0), std::max(columns, 0), {}};
                                  t.cells.assign(unsigned(t.rows * t.columns), value);
                              }};
        if (size == 0) return edit.Both(shape);
        const auto write = Do{[&](A& a) {
                                  T& cell = At(a, edit.twin.columns, int(i));
                                  cell = v(a);
                              },
                              [&](Twin& t) { t.cells[i] = value; }};
        edit.OneOf(shape, write, write, write);
    }
};

struct VectorModel {
    using T = cow_String;
    using Value = KZMBasVector<T>;
    using Twin = std::vector<int>;

    static bool Same(const Value& v, const Twin& t) {
        return v.Size() <= v.Capacity() && Equal<T>(v, t);
    }

    static void Step(Edit<VectorModel>& edit) {
        using V = Value;
        using M = Twin;
        Program& p = edit.p;
        const int size = static_cast<int>(edit.twin.size()), code = p.Int(0, 99),
                  at = static_cast<int>(p.Below(unsigned(size))),
                  n = std::min(p.Int(0, 3), size - at);
        const bool own = size && p.OneIn(2);
        const int value = own ? edit.twin.begin()[at] : code;
        const T made = As<T>(code);
        const auto v = [&](const V& vector) -> const T& { return own ? vector[at] : made; };
        edit.OneOf(
            Do{[&](V& c) { c.Append(v(c)); }, [&](M& m) { m.push_back(value); }},
            Do{[&](V& c) { c.Insert(at, v(c)); }, [&](M& m) { m.insert(m.begin() + at, value); }},
            Do{[&](V& c) { c.Remove(at, n); },
               [&](M& m) { m.erase(m.begin() + at, m.begin() + at + n); }},
            Do{[&](V& c) { c.Append(c.Data() + at, n); },
               [&](M& m) {
                   const M some(m.begin() + at, m.begin() + at + n);
                   m.insert(m.end(), some.begin(), some.end());
               }},
            Do{[&](V& c) { c.Resize(code / 4, v(c)); },
               [&](M& m) { m.resize(unsigned(code / 4), value); }},
            Do{[&](V& c) { code % 2 ? c.Compact() : c.Reserve(code); }, [](M&) {}},
            Do{[&](V& c) { return c.Find(made); },
               [&](M& m) {
                   const auto it = std::find(m.begin(), m.end(), code);
                   return it == m.end() ? -1 : int(it - m.begin());
               }});
    }
};

}  // namespace

std::vector<Model> Sequences() {
    return {
        {"String", 3445926119928486100u, Run<StringModel>::Of},
        {"ListOfInt", 18244024673649701966u, Run<ListModel<int>>::Of},
        {"ListOfDouble", 599070099075915157u, Run<ListModel<double>>::Of},
        {"ListOfString", 4017921218226246848u, Run<ListModel<cow_String>>::Of},
        {"ListOfBoxed", 18244024673649701966u, Run<ListModel<Boxed>>::Of},
        {"FixedArrayOfDouble", 7426974263886064073u, Run<ArrayModel<cow_FixedArray<double>>>::Of},
        {"FixedArrayOfString", 13340086731310812427u,
         Run<ArrayModel<cow_FixedArray<cow_String>>>::Of},
        {"Array2DOfFloat", 11361296151448389566u, Run<ArrayModel<cow_2DArray<float>>>::Of},
        {"Array2DOfString", 2161416596074323369u, Run<ArrayModel<cow_2DArray<cow_String>>>::Of},
        {"Vector", 9758074974112853852u, Run<VectorModel>::Of}};
}

}  // namespace models
