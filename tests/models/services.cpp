#include <files/KZMBasUtlFilePath.h>
#include <models/model.h>
#include <omi/omi_SwapperGuts.h>

#include <algorithm>
#include <cstring>

namespace models {
namespace {

// A path beside the texts it was last made from: they always make the same one again.
struct PathModel {
    using Value = KZMBasUtlFilePath;
    struct Twin {
        cow_String names[2] = {"C:\\w", "f"};
        unsigned turned = 0;
        auto begin() const { return std::begin(names); }
        auto end() const { return std::end(names); }
        void SetFilePath(const cow_String& directory, const cow_String& file) {
            *this = {{directory, file}, 0};
        }
        void Portable() { turned = 1; }
        void Native() { turned += turned == 1; }
        Value Made() const {
            Value path(names[0], names[1]);
            if (turned) path.Portable();
            if (turned == 2) path.Native();
            return path;
        }
        cow_String PathName() const { return Made().PathName(); }
    };
    static std::pair<Value, Twin> New(unsigned) { return {Twin().Made(), {}}; }

    static bool Same(const Value& path, const Twin& twin) {
        const cow_String name = path.FileName();
        if (!path.IsUrl() && !path.IsRemote()) {
            Require(name == path.BaseName().Append(path.Extension()), "the file name");
            Require(path.PathName() == path.Directory().Append(name), "the path name");
            Require(path.AbsolutePathName() == path.AbsoluteDirectoryPath().Append(name),
                    "the whole");
        }
        return path == twin.Made();
    }

    static void Step(Run<PathModel>& run) {
        static constexpr const char* kParts[] = {
            "/",    "\\", ".", "..", "a", "b.c", ":", "C:", "D:\\", "http://", "Network connectors",
            "\xC4", "//"};
        cow_String texts[2];
        for (cow_String& text : texts)
            for (unsigned n = run.p.Below(6); n > 0; --n)
                text += kParts[run.p.Below(std::size(kParts))];
        const auto set = [&](auto& path) { path.SetFilePath(texts[0], texts[1]); };
        run.OneOf(
            set, set, [](auto& path) { path.Portable(); }, [](auto& path) { path.Native(); },
            [](auto& path) { return path.PathName(); });
    }
};

// A step is one array, converted in every way between marks, which stay as they are.
template <class T>
Outcome ByteOrder(Program p, bool) {
    using Swapper = omi_SwapperGuts;
    Outcome outcome;
    for (; !p.AtEnd(); ++outcome.steps) {
        const std::size_t n = p.Below(8) == 7 ? p.Below(700) : p.Below(70), offset = p.Below(33);
        const auto count = static_cast<std::ptrdiff_t>(n);
        std::vector<T> values(n), back(n), inPlace;
        for (T& each : values) each = static_cast<T>(p.Below(256) * 0x0123456789abcdf1u >> 3);
        std::vector<unsigned char> bytes(offset, 0xEE);
        for (const T each : values)
            for (std::size_t byte = sizeof(T); byte-- > 0;)
                bytes.push_back(static_cast<unsigned char>(each >> (8 * byte)));
        bytes.resize(bytes.size() + 8, 0xEE);
        std::vector<unsigned char> out(bytes.size(), 0xEE);
        Swapper::ExternalizeArray(&out[offset], values.data(), count);
        Require(out == bytes, "the bytes written");
        Swapper::InternalizeArray(&out[offset], back.data(), count);
        inPlace = values;
        Swapper::ExternalizeArray(inPlace.data(), inPlace.data(), count);
        Require(!n || std::memcmp(inPlace.data(), &bytes[offset], n * sizeof(T)) == 0, "in place");
        Swapper::InternalizeArray(inPlace.data(), inPlace.data(), count);
        Require(inPlace == values && back == values, "the values read");
        Mix(outcome.sum, bytes);
    }
    return outcome;
}

}  // namespace

std::vector<Model> Services() {
    return {{"FilePath", 16830677120337074226u, Run<PathModel>::Of},
            {"ByteOrder2", 6301961835136561338u, ByteOrder<unsigned short>},
            {"ByteOrder4", 15353869324611957299u, ByteOrder<unsigned int>},
            {"ByteOrder8", 5218914984496530636u, ByteOrder<unsigned long long>}};
}

}  // namespace models
