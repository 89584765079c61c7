#pragma once
#include <Eigen/SparseCore>
#include <utility>
#include <vector>

#include "ends.h"

namespace heat {

// Heat conduction through linear tetrahedra, row by row: row i times the temperatures of all nodes
// is the heat, in watts, that must be fed in at node i.
class Conduction {
public:
    Conduction(const Mesh& mesh, double conductivity);  // the mesh must outlive it

    // The row's columns in ascending order with their values; valid until the next call.
    const std::vector<std::pair<int, double>>& Row(int row);

private:
    const Mesh& m_mesh;
    double m_factor;
    std::vector<int> m_first;  // of the elements at each node, into m_elements
    std::vector<int> m_elements;
    std::vector<int> m_position;  // of a column in m_row, -1 where it has none
    std::vector<std::pair<int, double>> m_row;
};

// The equations of the nodes whose temperature is not given.
struct System {
    Eigen::SparseMatrix<double, Eigen::RowMajor> matrix;
    Eigen::VectorXd load;
    std::vector<int> unknownOf;      // by row; -1 where the temperature is given
    std::vector<double> prescribed;  // by row; unset where it is not given
};

System Assemble(Conduction& conduction, const Mesh& mesh, const Ends& ends, const RowTable& rows,
                double hot, double cold, TableClock& clock);

}  // namespace heat
