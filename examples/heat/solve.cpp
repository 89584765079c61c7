#include "solve.h"

#include <algorithm>
#include <cmath>

#include "heat_error.h"

namespace heat {
namespace {

constexpr double kTolerance = 1e-12;  // of the residual, relative to the load
constexpr double kMostImbalance = 1e-6;

// Conjugate gradients with the diagonal as preconditioner. Every iteration brings the unknowns
// nearer to the solution in the norm of the matrix, so they can be taken as they are at any time.
// The ranks reduce twice and exchange their halos once an iteration.
void Iterate(System& system, Halo& halo, const Ranks& ranks, WorkArrays& arrays, Solution& solution,
             Progress& progress, const Alerts& alerts) {
    const Eigen::Index own = system.load.size();
    WorkArrays::Vector inverseDiagonal = arrays.NewVector("inverse diagonal", own);
    WorkArrays::Vector residual = arrays.NewVector("residual", own);
    WorkArrays::Vector direction = arrays.NewVector("search direction", system.unknowns.size());
    WorkArrays::Vector image = arrays.NewVector("matrix by direction", own);

    for (Eigen::Index i = 0; i < own; ++i) inverseDiagonal[i] = 1 / system.matrix.coeff(i, i);
    residual = system.load;
    residual.noalias() -= system.matrix * system.unknowns;
    std::vector<double> sums = {system.load.squaredNorm(), residual.squaredNorm(), double(own)};
    ranks.Sum(sums);
    const double scale = std::sqrt(std::max(sums[0], sums[1]));
    const double mostIterations = 2 * sums[2];
    double lastSlope = 0;
    for (;;) {
        sums = {residual.squaredNorm(), residual.dot(inverseDiagonal.cwiseProduct(residual)),
                alerts.StopSignal() == 0 ? 0.0 : 1.0};
        ranks.Sum(sums);
        const double share = scale > 0 ? std::sqrt(sums[0]) / scale : 0;
        const double slope = sums[1];
        solution.isConverged = share < kTolerance;
        const bool isStopped = sums[2] > 0;
        if (solution.isConverged || isStopped || solution.iterations >= mostIterations) break;
        progress.Fraction(std::clamp(std::log(share) / std::log(kTolerance), 0.0, 1.0));

        direction.head(own) = inverseDiagonal.cwiseProduct(residual) +
                              (lastSlope > 0 ? slope / lastSlope : 0) * direction.head(own);
        lastSlope = slope;
        halo.Update(direction);
        image.noalias() = system.matrix * direction;
        const double step = slope / ranks.Sum(direction.head(own).dot(image));
        system.unknowns.head(own) += step * direction.head(own);
        residual -= step * image;
        ++solution.iterations;
    }
    halo.Update(system.unknowns);
    if (!solution.isConverged) solution.stopSignal = int(ranks.Greatest(alerts.StopSignal()));
}

// Of an end's nodes, the rank's own.
double HeatThrough(const cow_List<int>& end, const Domain& domain, Conduction& conduction,
                   const std::vector<double>& temperatureOf) {
    double heat = 0;
    for (const int label : end) {
        const int row = domain.tables.rows.ConstGet(label);
        if (!domain.mesh.IsOwn(row)) continue;
        for (const auto& [column, value] : conduction.Row(row)) {
            heat += value * temperatureOf[static_cast<std::size_t>(column)];
        }
    }
    return heat;
}

void Check(const Solution& solution) {
    if (solution.stopSignal != 0) return;
    if (!solution.isConverged) {
        throw HeatError(Text("the solution did not converge in ", solution.iterations,
                             " iterations; the mesh may have very flat elements"));
    }
    if (!(solution.Imbalance() < kMostImbalance)) {
        throw HeatError(Text("the heat does not balance: ", solution.heatIn, " W in, ",
                             solution.heatOut, " W out"));
    }
}

}  // namespace

double Solution::Imbalance() const {
    const double greater = std::max(std::fabs(heatIn), std::fabs(heatOut));
    return greater > 0 ? std::fabs(heatIn - heatOut) / greater : 0;
}

Solution Solve(System& system, Conduction& conduction, Domain& domain, Halo& halo, Ranks& ranks,
               WorkArrays& arrays, Progress& progress, const Alerts& alerts) {
    Solution solution;
    Iterate(system, halo, ranks, arrays, solution, progress, alerts);
    std::vector<double> temperatureOf = system.prescribed;
    for (std::size_t row = 0; row < temperatureOf.size(); ++row) {
        const int unknown = system.unknownOf[row];
        if (unknown >= 0) temperatureOf[row] = system.unknowns[unknown];
    }
    Tables& tables = domain.tables;
    tables.clock.Time([&] {
        for (std::size_t row = 0; row < temperatureOf.size(); ++row) {
            tables.temperatures.Insert(domain.mesh.labels[row], temperatureOf[row]);
        }
    });
    const auto heatThrough = [&](const char* end) {
        return ranks.Sum(
            HeatThrough(domain.ends.sets.ConstGet(end), domain, conduction, temperatureOf));
    };
    solution.heatIn = heatThrough(kHotEnd);
    solution.heatOut = -heatThrough(kColdEnd);
    ranks.Together([&] { Check(solution); });
    return solution;
}

}  // namespace heat
