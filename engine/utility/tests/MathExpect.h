// Near-equality of the math records for tests of every layer that uses them.
#pragma once

#include "engine/utility/Math.h"

#include <gtest/gtest.h>

namespace MathExpect
{

inline void ExpectNear(const Kestrin::Utility::CVec3& a, const Kestrin::Utility::CVec3& b,
                       float fTolerance = 1e-5f)
{
    EXPECT_NEAR(a.x, b.x, fTolerance);
    EXPECT_NEAR(a.y, b.y, fTolerance);
    EXPECT_NEAR(a.z, b.z, fTolerance);
}

inline void ExpectNear(const Kestrin::Utility::CMatrix44& a, const Kestrin::Utility::CMatrix44& b,
                       float fTolerance = 1e-5f)
{
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            EXPECT_NEAR(a.m[r][c], b.m[r][c], fTolerance) << "row " << r << " column " << c;
        }
    }
}

} // namespace MathExpect
