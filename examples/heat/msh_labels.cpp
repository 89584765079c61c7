#include "msh_labels.h"

#include <errors/KZMBasUtlReadError.h>

#include <climits>
#include <cstdint>
#include <fstream>
#include <limits>
#include <string>

#include "files.h"
#include "tables.h"

namespace heat {
namespace {

cow_String Digits(std::int64_t number) { return std::to_string(number).c_str(); }

// Walks through the nodes of an MSH file, reading numbers as the file's kind stores them.
class NodeReader {
public:
    explicit NodeReader(const cow_String& path)
        : m_path(path), m_file(path.CStr(), std::ios::binary) {
        if (!FindLine("$MeshFormat")) Fail("is not an MSH file");
        double version = 0;
        int kind = 0;
        int wordSize = 0;
        m_file >> version >> kind >> wordSize;
        SkipLine();
        m_isBinary = kind == 1;
        m_isOld = version >= 2 && version < 3;
        if (!m_file || (!m_isOld && version != 4.1)) {
            Fail("is an MSH file of a version other than 2.x and 4.1");
        }
        if (m_isBinary && Number<std::int32_t>() != 1) Fail("was written in another byte order");
    }

    void Check() {
        if (!FindLine("$Nodes")) Fail("holds no mesh");
        if (m_isOld) {
            CheckOldNodes();
            return;
        }
        const std::int64_t blocks = Number<std::uint64_t>();
        for (int i = 0; i < 3; ++i) Number<std::uint64_t>();  // count, lowest, highest
        for (std::int64_t i = 0; i < blocks; ++i) CheckBlock();
    }

private:
    void CheckOldNodes() {
        std::int64_t count = 0;
        m_file >> count;  // a text in both kinds
        SkipLine();
        for (std::int64_t i = 0; i < count; ++i) {
            CheckLabel(Number<std::int32_t>());
            SkipReals(3);
        }
    }

    void CheckBlock() {
        const std::int64_t dimension = Number<std::int32_t>();
        Number<std::int32_t>();  // the entity
        const bool isParametric = Number<std::int32_t>() != 0;
        const std::int64_t count = Number<std::uint64_t>();
        CheckFile();
        for (std::int64_t i = 0; i < count; ++i) CheckLabel(Number<std::uint64_t>());
        SkipReals(count * (isParametric ? 3 + dimension : 3));
    }

    // What was read last may be cut, also where it stands at the end of the file.
    void CheckFile() const {
        if (m_file.bad()) {
            OnFile("cannot read", m_path, [] {
                KZMBasUtlReadError(KZMBasSystemError::Last()).Throw("msh_labels.cpp", __LINE__);
            });
        }
        if (!m_file.good()) Fail("ends in the middle of its nodes");
    }

    void CheckLabel(std::int64_t label) {
        CheckFile();
        if (label < 1 || label > INT_MAX) {
            throw HeatError(Text("'", m_path, "' has a node labelled ", Digits(label),
                                 "; labels run from 1 to 2147483647"));
        }
        const auto bit = static_cast<unsigned>(label);
        if (m_seen.IsSet(bit)) {
            throw HeatError(Text("'", m_path, "' has two nodes labelled ", Digits(label)));
        }
        m_seen.SetBit(bit);
    }

    void SkipReals(std::int64_t count) {
        if (m_isBinary) {
            m_file.seekg(count * static_cast<std::int64_t>(sizeof(double)), std::ios::cur);
            return;
        }
        double ignored;
        for (std::int64_t i = 0; i < count && m_file; ++i) m_file >> ignored;
    }

    // A number that binary files hold as a T.
    template <class T>
    std::int64_t Number() {
        if (m_isBinary) {
            T value{};
            m_file.read(reinterpret_cast<char*>(&value), sizeof value);
            return static_cast<std::int64_t>(value);
        }
        std::int64_t value = 0;
        m_file >> value;
        return value;
    }

    void SkipLine() { m_file.ignore(std::numeric_limits<std::streamsize>::max(), '\n'); }

    bool FindLine(const char* wanted) {
        std::string line;
        while (std::getline(m_file, line)) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (line == wanted) return true;
        }
        return false;
    }

    [[noreturn]] void Fail(const char* what) const {
        throw HeatError(Text("'", m_path, "' ", what));
    }

    cow_String m_path;
    std::ifstream m_file;
    LabelBits m_seen;
    bool m_isBinary = false;
    bool m_isOld = false;
};

}  // namespace

void CheckNodeLabels(const cow_String& path) { NodeReader(path).Check(); }

}  // namespace heat
