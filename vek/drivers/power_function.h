#ifndef VEK_DRIVERS_POWER_FUNCTION_H
#define VEK_DRIVERS_POWER_FUNCTION_H

namespace vek
{

/// Exponentials to some 1e-13, relatively, with no need of the mathematics library, which is an object of its own to
/// load at every start.

/// 2 to the power of any finite number; 0 where that is below the normal numbers, and the largest power of two where it
/// is beyond them.
double powerOfTwo(double exponent);

/// The logarithm to base 2 of a normal number above 0.
double logarithmToBaseTwo(double number);

/// A number, 0 or normal and above 0, to the power of an exponent above 0.
double power(double number, double exponent);

/// e to the power of any finite number.
double exponential(double exponent);

}  // namespace vek

#endif
