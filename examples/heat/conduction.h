#pragma once
#include <Eigen/SparseCore>
#include <utility>
#include <vector>

#include "ends.h"
#include "work_arrays.h"

namespace heat {

// Heat conduction through linear tetrahedra, row by row: row i times the temperatures of all nodes
// is the heat, in watts, that must be fed in at node i.
class Conduction {
public:
    // Mesh and adjacency must outlive it.
    Conduction(const Mesh& mesh, const Adjacency& elementsAt, double conductivity);

    // An own row's columns in ascending order with their values; valid until the next call.
    const std::vector<std::pair<int, double>>& Row(int row);

private:
    const Mesh& m_mesh;
    const Adjacency& m_elementsAt;
    double m_factor;
    std::vector<int> m_position;  // of a column in m_row, -1 where it has none
    std::vector<std::pair<int, double>> m_row;
};

// The equations of the rank's own nodes whose temperature is not given. The unknowns of its halo
// follow after its own: the matrix has columns for them, but no rows. Matrix and vectors are work
// arrays.
struct System {
    using Matrix = Eigen::Map<const Eigen::SparseMatrix<double, Eigen::RowMajor>>;

    std::vector<int> unknownOf;      // by row; -1 where the temperature is given
    std::vector<double> prescribed;  // by row; unset where it is not given
    Matrix matrix;
    WorkArrays::Vector load;
    WorkArrays::Vector unknowns;

    int UnknownOf(int row) const { return unknownOf[static_cast<std::size_t>(row)]; }
};

System Assemble(Conduction& conduction, const Mesh& mesh, const BoundaryValues& held, double guess,
                Tables& tables, WorkArrays& arrays);

}  // namespace heat
