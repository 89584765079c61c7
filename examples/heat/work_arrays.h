#pragma once
#include <coreutils/aio_ostream.h>
#include <runtime/KZMBasSrmDCAllocator.h>

#include <Eigen/Core>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <new>
#include <vector>

namespace heat {

// The arrays of the equations and of the solver, as named variables of the library: one report
// lists them all. They last as long as this object.
class WorkArrays {
public:
    using Vector = Eigen::Map<Eigen::VectorXd>;

    WorkArrays() : m_variables(m_heap) {}
    ~WorkArrays() { m_variables.freeAllVariables(); }

    // Filled with zeros. A variable holds at most 4 gigabytes.
    template <class T>
    T* New(const char* name, std::size_t count) {
        const bool fits = count <= UINT32_MAX / sizeof(T);
        const int number =
            fits ? m_variables.registerVariable(static_cast<unsigned>(count), int{sizeof(T)}, name)
                 : -1;
        if (number < 0) throw std::bad_alloc();
        T* const values = static_cast<T*>(m_variables.getVariable(number));
        std::fill_n(values, count, T());
        return values;
    }
    template <class T>
    T* NewCopy(const char* name, const std::vector<T>& values) {
        T* const copy = New<T>(name, values.size());
        std::copy(values.begin(), values.end(), copy);
        return copy;
    }
    Vector NewVector(const char* name, Eigen::Index size) {
        return Vector(New<double>(name, static_cast<std::size_t>(size)), size);
    }

    std::uint32_t Bytes() const { return m_variables.registeredBytes(); }
    void Print() const {
        aio_ostream output(stdout);
        m_variables.dumpVariables(output);
    }

private:
    KZMBasHeapAllocator m_heap;
    KZMBasSrmDCAllocator m_variables;
};

}  // namespace heat
