#include "frame/export.h"
#include "frame/serv.h"

#include <cmath>

ORV_EXPORT double orv_serv_d_sign(const double* magnitude, const double* sign)
{
    return std::copysign(*magnitude, *sign);
}
ORV_EXPORT float orv_serv_s_sign(const float* magnitude, const float* sign) { return std::copysign(*magnitude, *sign); }

ORV_EXPORT void orv_serv_libm_sincos(double angle, double* sine, double* cosine) { ::sincos(angle, sine, cosine); }
ORV_EXPORT void orv_serv_libm_sincosf(float angle, float* sine, float* cosine) { ::sincosf(angle, sine, cosine); }
