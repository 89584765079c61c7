#include "solve.h"

#include <omi/omi_BlkBitVectTrav.h>

#include <Eigen/IterativeLinearSolvers>
#include <algorithm>
#include <cmath>

#include "heat_error.h"

namespace heat {
namespace {

constexpr double kTolerance = 1e-12;  // of the residual, relative to the load
constexpr double kMostImbalance = 1e-6;

// The diagonal of the matrix as preconditioner. Conjugate gradients hand it the residual once per
// iteration, which is where progress can be seen.
class WatchedDiagonal : public Eigen::DiagonalPreconditioner<double> {
public:
    void Watch(Progress* progress, double loadNorm) {
        m_progress = progress;
        m_loadNorm = loadNorm;
    }

    template <class Residual>
    auto solve(const Eigen::MatrixBase<Residual>& residual) const {
        if (m_progress != nullptr && m_loadNorm > 0) {
            const double share = residual.norm() / m_loadNorm;
            if (share > 0) m_progress->Fraction(std::log(share) / std::log(kTolerance));
        }
        return Eigen::DiagonalPreconditioner<double>::solve(residual);
    }

private:
    Progress* m_progress = nullptr;
    double m_loadNorm = 0;
};

double HeatThrough(const NodeSet& end, const RowTable& rows, Conduction& conduction,
                   const std::vector<double>& temperatureOf) {
    double heat = 0;
    omi_BlkBitVectTrav traversal(&end);
    unsigned label = 0;
    for (bool more = traversal.First(label); more; more = traversal.Next(label)) {
        int row = 0;
        rows.ConstGetValue(static_cast<int>(label), row);
        for (const auto& [column, value] : conduction.Row(row)) {
            heat += value * temperatureOf[static_cast<std::size_t>(column)];
        }
    }
    return heat;
}

}  // namespace

double Solution::Imbalance() const {
    const double greater = std::max(std::fabs(heatIn), std::fabs(heatOut));
    return greater > 0 ? std::fabs(heatIn - heatOut) / greater : 0;
}

Solution Solve(const System& system, Conduction& conduction, const Mesh& mesh, const Ends& ends,
               const RowTable& rows, TemperatureTable& temperatures, Progress& progress,
               TableClock& clock) {
    Solution solution;
    Eigen::VectorXd unknowns;
    if (system.load.size() > 0) {
        Eigen::ConjugateGradient<Eigen::SparseMatrix<double, Eigen::RowMajor>,
                                 Eigen::Lower | Eigen::Upper, WatchedDiagonal>
            solver;
        solver.setTolerance(kTolerance);
        solver.preconditioner().Watch(&progress, system.load.norm());
        solver.compute(system.matrix);
        unknowns = solver.solve(system.load);
        solution.iterations = static_cast<int>(solver.iterations());
        if (solver.info() != Eigen::Success) {
            throw HeatError(Text("the solution did not converge in ", solution.iterations,
                                 " iterations; the mesh may have very flat elements"));
        }
    }
    std::vector<double> temperatureOf = system.prescribed;
    for (std::size_t row = 0; row < temperatureOf.size(); ++row) {
        const int unknown = system.unknownOf[row];
        if (unknown >= 0) temperatureOf[row] = unknowns[unknown];
    }
    clock.Time([&] {
        for (std::size_t row = 0; row < temperatureOf.size(); ++row) {
            temperatures.Insert(mesh.labels[row], temperatureOf[row]);
        }
    });
    solution.heatIn = HeatThrough(ends.hot, rows, conduction, temperatureOf);
    solution.heatOut = -HeatThrough(ends.cold, rows, conduction, temperatureOf);
    if (!(solution.Imbalance() < kMostImbalance)) {
        throw HeatError(Text("the heat does not balance: ", solution.heatIn, " W in, ",
                             solution.heatOut, " W out"));
    }
    return solution;
}

}  // namespace heat
