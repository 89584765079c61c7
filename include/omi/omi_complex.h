#pragma once
#include <kzm_export.h>

#include <cmath>
#include <complex>

// A complex number of doubles, for interfaces that store and pass one. To calculate use
// std::complex<double>, to which it converts both ways without loss; modulus, argument and equality
// agree with it. Laid out as std::complex<double> and as complex(8) of Fortran.
class KZM_API omi_complex {
public:
    // From Cartesian and from polar coordinates, angles in radians.
    constexpr omi_complex(double real = 0, double imaginary = 0)
        : m_real(real), m_imaginary(imaginary) {}
    constexpr omi_complex(const std::complex<double>& z) : omi_complex(z.real(), z.imag()) {}
    static omi_complex Polar(double modulus, double argument) {
        return {modulus * std::cos(argument), modulus * std::sin(argument)};
    }

    // To calculate with.
    constexpr operator std::complex<double>() const { return {m_real, m_imaginary}; }

    // The parts, and the polar coordinates as std::abs and std::arg give them.
    constexpr double Real() const { return m_real; }
    constexpr double Imaginary() const { return m_imaginary; }
    double Modulus() const { return std::hypot(m_real, m_imaginary); }
    double Argument() const { return std::atan2(m_imaginary, m_real); }  // -pi to pi

    // By value, so that 0 equals -0 and nothing equals a NaN.
    friend constexpr bool operator==(const omi_complex& a, const omi_complex& b) {
        return a.m_real == b.m_real && a.m_imaginary == b.m_imaginary;
    }

private:
    friend struct kzm_Layout;
    double m_real;
    double m_imaginary;
};
