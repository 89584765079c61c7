#include <gmsh.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <tuple>
#include <vector>

#include "solids.h"

namespace fs = std::filesystem;

namespace {

constexpr auto kFromOne = [](int place) { return place + 1; };

std::string OnRanks(int count) {
    return count > 1 ? HEAT_LAUNCHER " -n " + std::to_string(count) + " " : "";
}

std::string Contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream contents;  // empty for a folder
    contents << file.rdbuf();
    return contents.str();
}

// The named array of a .vtu file with appended data.
template <class T>
std::vector<T> ArrayOf(const std::string& vtu, const std::string& name) {
    const std::size_t tag = vtu.find("Name=\"" + name + "\"");
    const std::size_t data = vtu.find("<AppendedData encoding=\"raw\">\n_");
    if (tag == vtu.npos || data == vtu.npos) return {};
    const std::size_t offset = std::stoul(vtu.substr(vtu.find("offset=\"", tag) + 8));
    const char* block = vtu.data() + vtu.find('_', data) + 1 + offset;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, block, sizeof bytes);
    std::vector<T> values(bytes / sizeof(T));
    std::memcpy(values.data(), block + sizeof bytes, bytes);
    return values;
}

class HeatTest : public testing::Test {
protected:
    HeatTest() {
        std::string pattern = (fs::temp_directory_path() / "heat-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
    }
    ~HeatTest() override { fs::remove_all(m_folder); }

    std::string File(const std::string& name) const { return m_folder + "/" + name; }

    // Runs the program with its results in the folder "out"; gives the exit code. What the shell is
    // to do before and after the program's start is said in its language.
    int Run(const std::string& arguments, const std::string& before = "",
            const std::string& after = "") {
        const std::string command = before + HEAT_PROGRAM + " --out " + File("out") + " " +
                                    arguments + " >" + File("stdout") + " 2>" + File("stderr") +
                                    after;
        const int status = std::system(command.c_str());
        m_output = Contents(File("stdout"));
        m_error = Contents(File("stderr"));
        m_vtu = Contents(File("out/temperature.vtu"));
        if (m_vtu.empty()) m_vtu = Contents(File("out/temperature_1.vtu"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // A number of the printed table.
    double Figure(const std::string& name) const {
        const std::size_t line = m_output.find("\n  " + name + " ");
        if (line == m_output.npos) return NAN;
        return std::stod(m_output.substr(line + 3 + name.size()));
    }

    // The temperature of each label, from all files that the run wrote.
    std::map<int, double> Temperatures() const {
        std::map<int, double> all;
        for (const auto& file : fs::directory_iterator(File("out"))) {
            if (file.path().extension() != ".vtu") continue;
            const std::string vtu = Contents(file.path());
            const auto labels = ArrayOf<int>(vtu, "label");
            const auto temperatures = ArrayOf<double>(vtu, "temperature");
            auto ghosts = ArrayOf<char>(vtu, "vtkGhostType");
            ghosts.resize(labels.size());
            for (std::size_t i = 0; i < labels.size(); ++i) {
                if (ghosts[i] != 0) continue;
                EXPECT_TRUE(all.emplace(labels[i], temperatures[i]).second) << labels[i];
            }
        }
        return all;
    }

    std::string m_folder, m_output, m_error, m_vtu;
};

}  // namespace

// Labels in clusters up to the largest int change nothing.
TEST_F(HeatTest, BoxGetsTheExactLinearFieldFromFilesOfEveryKind) {
    const auto clustered = [](int place) -> long long {
        constexpr long long kBases[] = {1, 8190, 1048570, 1LL << 30, INT_MAX - 7};
        return kBases[place / 50] + place % 50;  // the last of 208 places gets INT_MAX
    };
    WriteBoxMesh(File("old.msh"), false, clustered);
    WriteBoxMesh(File("new.msh"), true, clustered);
    WriteBoxStl(File("box.stl"), true);
    gmsh::initialize();
    gmsh::model::occ::addBox(0, 0, 0, 4, 1, 1);
    gmsh::model::occ::synchronize();
    gmsh::write(File("box.brep"));
    gmsh::finalize();
    for (const std::string name : {"old.msh", "new.msh", "box.stl", "box.brep"}) {
        SCOPED_TRACE(name);
        ASSERT_EQ(Run(File(name) + " --size 0.3"), 0) << m_error;
        // 100 degrees at x = 0 fall evenly to 20 degrees at x = 4.
        const auto position = ArrayOf<double>(m_vtu, "position");
        const auto temperature = ArrayOf<double>(m_vtu, "temperature");
        ASSERT_EQ(static_cast<double>(temperature.size()), Figure("nodes"));
        ASSERT_EQ(position.size(), 3 * temperature.size());
        for (std::size_t i = 0; i < temperature.size(); ++i)
            ASSERT_NEAR(temperature[i], 100 - 20 * position[3 * i], 1e-8) << "node " << i;
        // Conductivity times area over length times the difference, in mm.
        EXPECT_NEAR(Figure("heat in"), 50e-3 * 1.0 / 4 * 80, 1e-6);
        EXPECT_LT(Figure("relative difference"), 1e-6);
        if (!name.ends_with("msh")) continue;
        std::vector<int> labels = ArrayOf<int>(m_vtu, "label");
        std::sort(labels.begin(), labels.end());
        ASSERT_EQ(labels.size(), 208u);
        for (int i = 0; i < 208; ++i) EXPECT_EQ(labels[size_t(i)], clustered(i));
    }
}

TEST_F(HeatTest, NamesNeedNoEncodingAndLookLikeNothingElse) {
    std::string pictures[2];
    for (const char* const name : {"box?.msh", "box\xFF.msh"}) {
        WriteBoxMesh(File(name), false, kFromOne);
        const std::string arguments = "'" + File(name) + "' --save-environment C:e";
        EXPECT_EQ(Run(arguments, "cd " + m_folder + "; "), 0) << m_error;
        EXPECT_NE(Contents(File("C:e")).find("PATH="), std::string::npos);
        std::swap(pictures[0], pictures[1]);
        pictures[0] = Contents(File("out/temperature.png"));
    }
    EXPECT_EQ(pictures[0].substr(1, 3), "PNG");
    EXPECT_EQ(pictures[0], pictures[1]);
}

TEST_F(HeatTest, HeatThroughTheRealPartBalances) {
    ASSERT_EQ(std::system(("gzip -dcf " HEAT_PART " >" + File("part.step")).c_str()), 0)
        << "the part comes with package gmsh-doc; KZM_HEAT_PART says where it is";
    ASSERT_EQ(Run(File("part.step") + " --size 3 --hot 80 --cold -10"), 0) << m_error;
    EXPECT_LT(Figure("relative difference"), 1e-6);
    EXPECT_NEAR(Figure("lowest temperature"), -10, 1e-4);
    EXPECT_NEAR(Figure("highest temperature"), 80, 1e-4);
}

TEST_F(HeatTest, AnyNumberOfRanksGetsTheSameTemperatures) {
    WriteBoxMesh(File("box.msh"), false, [](int place) { return INT_MAX - 8190 * place; });
    gmsh::initialize();
    gmsh::model::occ::addTorus(0, 0, 0, 3, 1, -1, 2.5);
    gmsh::model::occ::synchronize();
    gmsh::write(File("bend.brep"));
    gmsh::finalize();
    const std::pair<std::string, int> parts[] = {{"box.msh", 4}, {"bend.brep", 1}};
    for (const auto& [name, least] : parts) {
        fs::remove_all(File("out"));
        ASSERT_EQ(Run(File(name) + " --size 0.5"), 0) << m_error;
        const auto expected = Temperatures();
        const double nodes = Figure("nodes"), elements = Figure("elements");
        for (int count = least; count <= 4; ++count) {
            SCOPED_TRACE(name + " on " + std::to_string(count));
            fs::remove_all(File("out"));
            const std::string launch = HEAT_LAUNCHER " -n " + std::to_string(count) + " ";
            ASSERT_EQ(Run(File(name) + " --size 0.5", launch), 0) << m_error;
            EXPECT_EQ(Figure("nodes"), nodes);
            EXPECT_EQ(Figure("elements"), elements);
            const auto temperatures = Temperatures();
            ASSERT_EQ(temperatures.size(), expected.size());
            for (const auto& [label, temperature] : expected)
                ASSERT_NEAR(temperatures.at(label), temperature, 1e-9) << label;
            EXPECT_EQ(fs::exists(File("out/temperature.pvtu")), count > 1);
        }
    }
}

TEST_F(HeatTest, RankThatIsKilledEndsAllAndLeavesNothing) {
    WriteBoxMesh(File("bar.msh"), false, kFromOne, 3000);
    const std::string launch =
        OnRanks(3) + "sh -c 'echo $$ >" + File("process") + "$PMI_RANK; exec \"$@\"' sh ";
    const std::string kill = " & until grep -qs '^solving$' " + File("stdout") +
                             "; do sleep 0.01; done; kill -9 $(cat " + File("process1") +
                             "); wait $!";
    EXPECT_EQ(Run(File("bar.msh"), launch, kill), 9);
    EXPECT_NE(m_output.find("Killed (signal 9)"), m_output.npos) << m_output << m_error;
    EXPECT_FALSE(fs::exists(File("out")));
}

TEST_F(HeatTest, BadInputIsOneLineAndLeavesNothing) {
    const auto expectRefusal = [&](const std::string& arguments, const char* message) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(Run(arguments), 1);
        EXPECT_EQ(std::count(m_error.begin(), m_error.end(), '\n'), 1) << m_error;
        EXPECT_NE(m_error.find(message), m_error.npos) << m_error;
        EXPECT_FALSE(fs::exists(File("out")));
    };
    const char* const files[][3] = {
        {"cut.step", "ISO-10303-21;\nHEADER;\n", "cannot be read"},
        {"text.msh", "SystemCall \"touch here\";\n", "not an MSH file"},
        {"empty.msh", "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n0\n$EndNodes\n", "no surface"},
        {"cut.msh", "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n9\n1 0 0 0\n1", "in the middle"},
        {"huge.msh", "$MeshFormat\n4.1 0 8\n$EndMeshFormat\n$Nodes\n999999999999 5 1 5\n",
         "in the middle"}};
    for (const auto& [name, text, message] : files) {
        std::ofstream(File(name)) << text;
        expectRefusal(File(name), message);
    }
    const std::tuple<long long, int, bool, const char*> labels[] = {
        {0, 208, false, "labelled 0;"},
        {1, 207, false, "two nodes labelled 1"},
        {4294967297, 208, true, "labelled 4294967297;"}};
    for (const auto& [first, count, isVersion4, message] : labels) {
        WriteBoxMesh(File("bad.msh"), isVersion4, [&](int place) { return first + place % count; });
        expectRefusal(File("bad.msh"), message);
    }
    WriteBoxStl(File("open.stl"), false);
    WriteBoxStl(File("closed.stl"), true);
    WriteBoxMesh(File("box.msh"), false, kFromOne);
    const char* const options[][2] = {{"box.msh --size 0", "above zero"},
                                      {"box.msh --size thick", "takes a number"},
                                      {"box.msh --hot 10 --cold 10", "above --cold"},
                                      {"box.msh --colour red", "unknown option"},
                                      {"box.msh --out /dev/null/under", "Not a directory"},
                                      {"closed.stl --size 1e-4", "too small"},
                                      {"open.stl", "not closed"},
                                      {"missing.step", "No such file or directory"},
                                      {"box.msh --save-environment /dev/full", "not a file"},
                                      {"box.msh --save-environment ''", "name of a file"},
                                      {"", "not a file"}};
    for (const auto& [arguments, message] : options) expectRefusal(File(arguments), message);
    expectRefusal("", "no part");
}

// Its terminal is closed, then it is asked for its progress until it tells how far the iteration
// is, and then stopped.
TEST_F(HeatTest, SignalsAskForProgressAndStopTheIterationWithItsBestSolution) {
    WriteBoxMesh(File("bar.msh"), false, kFromOne, 3000);
    const auto sendUntil = [&](const char* signal, const char* printed) {
        return " until grep -qs '" + std::string(printed) + "' " + File("stdout") + "; do kill -" +
               signal + " $! || exit 1; sleep 0.01; done;";
    };
    const std::tuple<std::string, int, int> stops[] = {
        {"INT", 130, 1}, {"TERM", 143, 1}, {"TERM", 143, 2}};
    for (const auto& [stop, code, ranks] : stops) {
        SCOPED_TRACE(stop);
        const std::string after =
            " &" + sendUntil("0", "^reading$") + sendUntil(ranks == 1 ? "HUP" : "0", "^solving$") +
            sendUntil("USR1", "^solving: .* %, .* s$") + " kill -" + stop + " $!; wait $!";
        const int exitCode = Run(File("bar.msh") + " --report", OnRanks(ranks), after);
        if (ranks == 1) {  // a launcher that is stopped as well may say 0
            EXPECT_EQ(exitCode, code);
        }
        EXPECT_EQ(m_error, "heat: stopped before the solution converged\n");
        EXPECT_EQ(ArrayOf<int>(m_vtu, "converged"), std::vector<int>{0});
        EXPECT_EQ(Temperatures().size(), 16u * 3001);
        fs::remove_all(File("out"));
        fs::remove(File("stdout"));  // the next run must not be taken for this one
    }
}

// No room for the environment or the results; a folder where the picture should go: none must
// appear alone.
TEST_F(HeatTest, ResultsAppearTogetherOrNotAtAll) {
    WriteBoxMesh(File("box.msh"), false, kFromOne);
    const std::string environment = " --save-environment " + File("environment");
    EXPECT_EQ(Run(File("box.msh") + environment, "ulimit -f 8; LONG=$(printf %09000d 0) "), 1);
    EXPECT_NE(m_error.find("environment': All the data provided"), m_error.npos);
    EXPECT_EQ(Run(File("box.msh"), "ulimit -f 8; "), 1);
    EXPECT_NE(m_error.find("temperature.vtu': Write Error: File too large"), m_error.npos);
    EXPECT_FALSE(fs::exists(File("out")));
    const std::tuple<std::string, int> folders[] = {
        {".png", 1}, {".png", 2}, {".pvtu", 2}, {"_1.vtu", 3}};
    for (const auto& [ending, ranks] : folders) {
        SCOPED_TRACE(ending);
        const std::string folder = File("out/temperature" + ending);
        fs::create_directories(folder);
        EXPECT_EQ(Run(File("box.msh"), OnRanks(ranks)), 1);
        EXPECT_NE(m_error.find("Is a directory"), m_error.npos);
        EXPECT_EQ(std::count(m_error.begin(), m_error.end(), '\n'), 1) << m_error;
        const auto entries = fs::directory_iterator(File("out"));
        EXPECT_EQ(std::distance(fs::begin(entries), fs::end(entries)), 1);
        fs::remove(folder);
    }
    EXPECT_EQ(Run(File("box.msh"), "", " >/dev/full"), 1);
    EXPECT_EQ(m_error, "heat: cannot write the output: No space left on device\n");
}
