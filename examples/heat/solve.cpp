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
void Iterate(System& system, WorkArrays& arrays, Solution& solution, Progress& progress,
             const Alerts& alerts) {
    const Eigen::Index size = system.load.size();
    WorkArrays::Vector inverseDiagonal = arrays.NewVector("inverse diagonal", size);
    WorkArrays::Vector residual = arrays.NewVector("residual", size);
    WorkArrays::Vector direction = arrays.NewVector("search direction", size);
    WorkArrays::Vector image = arrays.NewVector("matrix by direction", size);

    for (Eigen::Index i = 0; i < size; ++i) inverseDiagonal[i] = 1 / system.matrix.coeff(i, i);
    residual = system.load;
    residual.noalias() -= system.matrix * system.unknowns;
    const double scale = std::max(system.load.norm(), residual.norm());
    direction = inverseDiagonal.cwiseProduct(residual);
    double slope = residual.dot(direction);
    const Eigen::Index mostIterations = 2 * size;
    for (;;) {
        const double share = scale > 0 ? residual.norm() / scale : 0;
        solution.isConverged = share < kTolerance;
        if (solution.isConverged || alerts.StopSignal() != 0) return;
        if (solution.iterations == mostIterations) break;
        progress.Fraction(std::clamp(std::log(share) / std::log(kTolerance), 0.0, 1.0));

        image.noalias() = system.matrix * direction;
        const double step = slope / direction.dot(image);
        system.unknowns += step * direction;
        residual -= step * image;
        const double lastSlope = slope;
        slope = residual.dot(inverseDiagonal.cwiseProduct(residual));
        direction = inverseDiagonal.cwiseProduct(residual) + slope / lastSlope * direction;
        ++solution.iterations;
    }
    throw HeatError(Text("the solution did not converge in ", solution.iterations,
                         " iterations; the mesh may have very flat elements"));
}

double HeatThrough(const cow_List<int>& end, const RowTable& rows, Conduction& conduction,
                   const std::vector<double>& temperatureOf) {
    double heat = 0;
    for (const int label : end) {
        for (const auto& [column, value] : conduction.Row(rows.ConstGet(label))) {
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

Solution Solve(System& system, Conduction& conduction, const Mesh& mesh, const Ends& ends,
               Tables& tables, WorkArrays& arrays, Progress& progress, const Alerts& alerts) {
    Solution solution;
    Iterate(system, arrays, solution, progress, alerts);
    std::vector<double> temperatureOf = system.prescribed;
    for (std::size_t row = 0; row < temperatureOf.size(); ++row) {
        const int unknown = system.unknownOf[row];
        if (unknown >= 0) temperatureOf[row] = system.unknowns[unknown];
    }
    tables.clock.Time([&] {
        for (std::size_t row = 0; row < temperatureOf.size(); ++row) {
            tables.temperatures.Insert(mesh.labels[row], temperatureOf[row]);
        }
    });
    const auto heatThrough = [&](const char* end) {
        return HeatThrough(ends.sets.ConstGet(end), tables.rows, conduction, temperatureOf);
    };
    solution.heatIn = heatThrough(kHotEnd);
    solution.heatOut = -heatThrough(kColdEnd);
    if (solution.isConverged && !(solution.Imbalance() < kMostImbalance)) {
        throw HeatError(Text("the heat does not balance: ", solution.heatIn, " W in, ",
                             solution.heatOut, " W out"));
    }
    return solution;
}

}  // namespace heat
