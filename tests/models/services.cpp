#include <files/KZMBasUtlFilePath.h>
#include <models/model.h>
#include <omi/omi_SwapperGuts.h>
#include <omi/omi_fortran.h>

#include <algorithm>

namespace models {
namespace {

// A path beside the texts it was last made from: they always make the same one again.
struct PathModel {
    using Value = KZMBasUtlFilePath;
    struct Twin {
        cow_String directory = "C:\\w", file = "f";
        unsigned turned = 0;
    };
    static Value Made(const Twin& t) {
        Value path(t.directory, t.file);
        if (t.turned == 1) path.Portable();
        if (t.turned == 2) path.Portable().Native();
        return path;
    }
    static std::pair<Value, Twin> New(unsigned) { return {Made({}), {}}; }

    static bool Same(const Value& path, const Twin& twin) {
        const cow_String name = path.FileName();
        if (!path.IsUrl() && !path.IsRemote()) {
            Require(name == path.BaseName().Append(path.Extension()), "the file name");
            Require(path.PathName() == path.Directory().Append(name), "the path name");
            Require(path.AbsolutePathName() == path.AbsoluteDirectoryPath().Append(name),
                    "the whole");
        }
        return path == Made(twin);
    }
    static void MixInto(std::uint64_t& sum, const Value& path, const Twin&) {
        Mix(sum, path.PathName());
        Mix(sum, path.Extension());
    }

    static void Step(Edit<PathModel>& edit) {
        Program& p = edit.p;
        static constexpr const char* kParts[] = {
            "/",    "\\", ".", "..", "a", "b.c", ":", "C:", "D:\\", "http://", "Network connectors",
            "\xC4", "//"};
        cow_String texts[2];
        for (cow_String& text : texts)
            for (unsigned n = p.Below(6); n > 0; --n) text += kParts[p.Below(std::size(kParts))];
        const auto set = Do{[&](Value& path) { path.SetFilePath(texts[0], texts[1]); },
                            [&](Twin& t) {
                                t = {texts[0], texts[1], 0};
                            }};
        edit.OneOf(
            set, set, Do{[](Value& path) { path.Portable(); }, [](Twin& t) { t.turned = 1; }},
            Do{[](Value& path) { path.Native(); }, [](Twin& t) { t.turned += t.turned == 1; }});
    }
};

// The buffer that Fortran conversions fill, between marks.
struct FortranModel {
    using Value = std::string;
    using Twin = std::string;
    static bool Same(const Value& v, const Twin& t) { return v == t; }

    static void Step(Edit<FortranModel>& edit) {
        Program& p = edit.p;
        const int length = p.Int(-2, 99), size = p.Int(-2, 99);
        std::string text;
        for (int i = 0; i < 3 * length; ++i) text += " A\tb  "[p.Below(p.OneIn(8) ? 6 : 1)];
        const auto trimmed = [&](int at, int room) {
            std::string one =
                length > 0 ? text.substr(unsigned(at * length), unsigned(length)) : "";
            one.erase(one.find_last_not_of(' ') + 1);
            return one.substr(0, unsigned(std::max(room - 1, 0)));
        };
        const auto into = [](std::string& v, const std::string& out) {
            v = out + '\0' + std::string(100 - out.size(), '#');
        };
        const auto list = [&](std::string& v, char** texts) {
            v.clear();
            for (int i = 0; i < 3; ++i) v += texts[i] + std::string("|");
            omi_fortranStringListFree(3, texts);
        };
        const auto lists = [&](std::string& t, int room) {
            t = trimmed(0, room) + "|" + trimmed(1, room) + "|" + trimmed(2, room) + "|";
        };
        edit.OneOf(
            Do{[&](Value& v) {
                   v.assign(101, '#');
                   omi_fortranStringConvert(v.data(), text.data(), length);
               },
               [&](Twin& t) { into(t, trimmed(0, 80)); }},
            Do{[&](Value& v) {
                   v.assign(101, '#');
                   omi_fortranFileNameConvert(v.data(), size, text.data(), length);
               },
               [&](Twin& t) { size > 0 ? into(t, trimmed(0, size)) : void(t.assign(101, '#')); }},
            Do{[&](Value& v) {
                   v.assign(101, '#');
                   omi_fortranStringEnblank(v.data(), size, text.c_str());
               },
               [&](Twin& t) {
                   t = text.substr(0, unsigned(std::max(size, 0)));
                   t.resize(unsigned(std::max(size, 0)), ' ');
                   t.resize(101, '#');
               }},
            Do{[&](Value& v) { list(v, omi_fortranStringListConvert(3, text.data(), length)); },
               [&](Twin& t) { lists(t, 80); }},
            Do{[&](Value& v) {
                   list(v, omi_fortranStringVarListConvert(3, size, text.data(), length));
               },
               [&](Twin& t) { lists(t, size); }});
    }
};

// Bytes between marks, at any address.
template <class T>
struct ByteOrderModel {
    using Value = std::vector<unsigned char>;
    using Twin = Value;
    static bool Same(const Value& v, const Twin& t) { return v == t; }

    static void Step(Edit<ByteOrderModel>& edit) {
        Program& p = edit.p;
        const std::size_t n = p.Below(8) == 7 ? p.Below(700) : p.Below(70), offset = p.Below(33);
        std::vector<T> values(n), back(n);
        for (T& each : values) each = static_cast<T>(p.Below(256) * 0x0123456789abcdf1u >> 3);
        Twin bytes(offset, 0xEE);
        for (const T each : values)
            for (std::size_t byte = sizeof(T); byte-- > 0;)
                bytes.push_back(static_cast<unsigned char>(each >> (8 * byte)));
        bytes.resize(bytes.size() + 8, 0xEE);
        const auto count = static_cast<std::ptrdiff_t>(n);
        const auto expect = [&](Twin& t) { t = bytes; };
        edit.OneOf(Do{[&](Value& v) {
                          v.assign(bytes.size(), 0xEE);
                          omi_SwapperGuts::ExternalizeArray(&v[offset], values.data(), count);
                      },
                      expect},
                   Do{[&](Value& v) {
                          v.assign(bytes.size(), 0xEE);
                          for (std::size_t i = 0; i < n; ++i)
                              omi_SwapperGuts::SwapOut(&v[offset + i * sizeof(T)], values[i]);
                      },
                      expect},
                   Do{[&](Value& v) {
                          v = bytes;
                          omi_SwapperGuts::InternalizeArray(&v[offset], back.data(), count);
                          return back == values;
                      },
                      [&](Twin& t) {
                          t = bytes;
                          return true;
                      }},
                   Do{[&](Value& v) {
                          v = bytes;
                          back = values;
                          omi_SwapperGuts::ExternalizeArray(back.data(), back.data(), count);
                          omi_SwapperGuts::InternalizeArray(back.data(), back.data(), count);
                          return back == values;
                      },
                      [&](Twin& t) {
                          t = bytes;
                          return true;
                      }},
                   Do{[&](Value& v) {
                          v = bytes;
                          for (std::size_t i = 0; i < n; ++i)
                              omi_SwapperGuts::SwapIn(&v[offset + i * sizeof(T)], back[i]);
                          return back == values;
                      },
                      [&](Twin& t) {
                          t = bytes;
                          return true;
                      }});
    }
};

}  // namespace

std::vector<Model> Services() {
    return {{"FilePath", 17411244332343453563u, Run<PathModel>::Of},
            {"Fortran", 1350062536912218342u,
             [](Program program, bool) { return Run<FortranModel>::Of(program, false); }},
            {"ByteOrder2", 15982627954784254230u, Run<ByteOrderModel<unsigned short>>::Of},
            {"ByteOrder4", 16764924142272159102u, Run<ByteOrderModel<unsigned int>>::Of},
            {"ByteOrder8", 10227391629976470909u, Run<ByteOrderModel<unsigned long long>>::Of}};
}

}  // namespace models
