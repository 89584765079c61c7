#pragma once
#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <interop/cow_span.h>

#include <Eigen/Core>
#include <climits>
#include <new>
#include <span>

// Value arrays as vectors and matrices of Eigen 3.3 or later, without a copy. This header alone
// needs Eigen. The maps are views: what interop/cow_span.h says of spans holds for them, also that
// those for writing make the array private first. They are not aligned beyond the element.
//
//     cow_WritableVector(x) += 0.5 * cow_ConstMatrix(a) * cow_ConstVector(b);
//
// Write to x through one map at a time; where x stands on both sides, Eigen's rules for aliasing
// apply.
template <class T>
using cow_EigenVector = Eigen::Matrix<T, Eigen::Dynamic, 1>;
template <class T>  // in the order of cow_2DArray
using cow_EigenMatrix = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

// A column vector over a span, such as the runs of a list or of a table.
template <class T>
Eigen::Map<const cow_EigenVector<T>> cow_ConstVector(std::span<const T> values) {
    return {values.data(), static_cast<Eigen::Index>(values.size())};
}
template <class T>
Eigen::Map<cow_EigenVector<T>> cow_WritableVector(std::span<T> values) {
    return {values.data(), static_cast<Eigen::Index>(values.size())};
}

// A column vector over an array.
template <class T>
Eigen::Map<const cow_EigenVector<T>> cow_ConstVector(const cow_FixedArray<T>& array) {
    return cow_ConstVector(cow_ConstSpan(array));
}
template <class T>
Eigen::Map<cow_EigenVector<T>> cow_WritableVector(cow_FixedArray<T>& array) {
    return cow_WritableVector(cow_WritableSpan(array));
}

// A matrix of the array's rows and columns.
template <class T>
Eigen::Map<const cow_EigenMatrix<T>> cow_ConstMatrix(const cow_2DArray<T>& array) {
    return {array.begin(), array.Rows(), array.Cols()};
}
template <class T>
Eigen::Map<cow_EigenMatrix<T>> cow_WritableMatrix(cow_2DArray<T>& array) {
    return {cow_WritableSpan(array).data(), array.Rows(), array.Cols()};
}

// Fresh arrays with the values of an expression, which is evaluated into them. A vector of more
// than 2147483647 elements, or a matrix of as many rows or columns, is exhaustion: std::bad_alloc.
template <class Expression>
auto cow_ArrayOf(const Eigen::MatrixBase<Expression>& vector) {
    using T = typename Expression::Scalar;
    static_assert(Expression::ColsAtCompileTime == 1, "a column vector");
    if (vector.rows() > INT_MAX) throw std::bad_alloc();
    cow_FixedArray<T> array(static_cast<int>(vector.rows()), T());
    cow_WritableVector(array) = vector;
    return array;
}
template <class Expression>
auto cow_2DArrayOf(const Eigen::MatrixBase<Expression>& matrix) {
    using T = typename Expression::Scalar;
    if (matrix.rows() > INT_MAX || matrix.cols() > INT_MAX) throw std::bad_alloc();
    cow_2DArray<T> array(static_cast<int>(matrix.rows()), static_cast<int>(matrix.cols()), T());
    cow_WritableMatrix(array) = matrix;
    return array;
}

// A map over a temporary would end at once.
template <class T>
void cow_ConstVector(const cow_FixedArray<T>&&) = delete;
template <class T>
void cow_ConstMatrix(const cow_2DArray<T>&&) = delete;
