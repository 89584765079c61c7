#include <files/KZMBasUtlFilePath.h>
#include <models/model.h>
#include <omi/omi_SwapperGuts.h>
#include <omi/omi_fortran.h>
#include <runtime/KZMBasSrmDCAllocator.h>

#include <algorithm>
#include <cstring>
#include <map>

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

// A step is one list of texts, converted in every way into buffers of one size.
Outcome Fortran(Program p, bool) {
    Outcome outcome;
    for (; !p.AtEnd(); ++outcome.steps) {
        const int n = p.Int(0, 3), length = p.Int(0, p.OneIn(8) ? 100 : 6), size = p.Int(0, 90);
        std::string texts(static_cast<std::size_t>(n * length), ' ');
        for (char& c : texts) c = "a  \xC4"[p.Below(4)];
        char** const lists[] = {omi_fortranStringListConvert(n, texts.data(), length),
                                omi_fortranStringVarListConvert(n, size, texts.data(), length)};
        for (int i = 0; i < n; ++i) {
            const char* const text = texts.data() + i * length;
            std::string trimmed(text, static_cast<std::size_t>(length));
            trimmed.erase(trimmed.find_last_not_of(' ') + 1);
            const std::string cut = trimmed.substr(0, static_cast<unsigned>(std::max(size - 1, 0)));
            char name[102], all[102], back[102];
            omi_fortranFileNameConvert(name, size, text, length);
            omi_fortranStringConvert(all, text, length);
            omi_fortranStringEnblank(back, length, trimmed.c_str());
            Require((size == 0 || name == cut) && lists[1][i] == cut, "the cut text");
            Require(all == trimmed.substr(0, 79) && std::string(all) == lists[0][i], "the text");
            Require(std::memcmp(back, text, static_cast<std::size_t>(length)) == 0, "the way back");
            Mix(outcome.sum, cut);
        }
        for (char** const list : lists) omi_fortranStringListFree(n, list);
    }
    return outcome;
}

// Work arrays beside what their numbers stand for; blocks are addresses that nobody touches.
struct WorkArrays : KZMBasAllocator {
    struct Entry {
        std::uintptr_t block = 0;
        std::string name;
    };

    void* Alloc(unsigned) override { return reinterpret_cast<void*>(++taken * 16); }
    void* Alloc(unsigned size, unsigned&) override { return Alloc(size); }
    void Free(void* block) override { given += block != nullptr; }
    void* allocate(unsigned size, const void*) override { return Alloc(size); }
    void deallocate(void* block, unsigned) override { Free(block); }

    void Step(Program& p) {
        const std::string name(p.Below(3), 'n');
        int number = p.Int(-1, next + 1);
        const auto own = twin.find(number);
        const auto held = [](const auto& each) { return each.second.block != 0; };
        switch (p.OneIn(64) ? 9 : p.Below(4)) {
            case 0:
                number = arrays.registerVariable(3, 8, name.c_str());
                Require(number == next, "the next number");
                twin[next++] = {taken * 16, name};
                break;
            case 1:
                Require(arrays.constGetVariable(number) == arrays.getVariable(number), "the block");
                Require(reinterpret_cast<std::uintptr_t>(arrays.getVariable(number)) ==
                            twin[number].block,
                        "the block");
                break;
            case 2:
                if (own != twin.end()) twin.erase(own);
                arrays.freeVariable(number);
                Require(number == -1, "the freed number");
                break;
            case 9:
                twin.clear();
                arrays.freeAllVariables();
        }
        const auto first = std::find_if(twin.begin(), twin.end(),
                                        [&](auto& each) { return each.second.name == name; });
        Require(arrays.findVariable(name.c_str()) == (first == twin.end() ? -1 : first->first),
                "the number of a name");
        Require(given == taken - std::size_t(std::count_if(twin.begin(), twin.end(), held)),
                "the blocks given back");
    }

    std::map<int, Entry> twin;
    int next = 0;
    std::uintptr_t taken = 0, given = 0;
    KZMBasSrmDCAllocator arrays{*this};
};

Outcome NamedArrays(Program p, bool) {
    WorkArrays model;
    Outcome outcome;
    for (; !p.AtEnd(); ++outcome.steps) model.Step(p);
    for (const auto& [number, entry] : model.twin) Mix(outcome.sum, number);
    return outcome;
}

}  // namespace

std::vector<Model> Services() {
    return {{"FilePath", 16830677120337074226u, Run<PathModel>::Of},
            {"ByteOrder2", 6301961835136561338u, ByteOrder<unsigned short>},
            {"ByteOrder4", 15353869324611957299u, ByteOrder<unsigned int>},
            {"ByteOrder8", 5218914984496530636u, ByteOrder<unsigned long long>},
            {"Fortran", 9887206993761047822u, Fortran},
            {"NamedArrays", 14339280951311091958u, NamedArrays}};
}

}  // namespace models
