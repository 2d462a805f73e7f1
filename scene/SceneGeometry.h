// Small geometry helpers of the entities: ray against an oriented box, axis normalisation.
#pragma once

#include "engine/utility/Math.h"

namespace Ovrel
{

using Kestrin::Utility::CBox3;
using Kestrin::Utility::CMatrix44;
using Kestrin::Utility::CVec3;

// The engine's empty box: minimum 1e10, maximum -1e10 in each axis.
CBox3 SceneEmptyBox();

// Ray against the box of half size vHalf centred on mWorld's origin, along mWorld's axes,
// each half size scaled by its axis's length. The distance is in units of vDirection's length.
// A ray starting inside hits at distance 0 when bInsideHits, and misses otherwise. A matrix
// with a zero axis never hits.
bool RayHitsOrientedBox(const CMatrix44& mWorld, const CVec3& vHalf, const CVec3& vStart,
                        const CVec3& vDirection, bool bInsideHits, float& fDistance);
// The world box of that oriented box.
CBox3 OrientedBoxBounds(const CMatrix44& mWorld, const CVec3& vHalf);

// The matrix with its three axes of unit length (translation kept); vScale gets the lengths.
// A zero axis stays zero.
CMatrix44 NormalizeAxes(const CMatrix44& mMatrix, CVec3& vScale);

// Bitwise equality: no tolerance, and -0 differs from 0, so that an unchanged matrix is
// recognised without touching what depends on it.
bool SameBits(const CMatrix44& a, const CMatrix44& b);

} // namespace Ovrel
