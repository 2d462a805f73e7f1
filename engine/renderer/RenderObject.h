// The part of the renderer's object interface that the scene drives. What the renderer
// itself reads from an object (batches, light influence) joins it with the render world.
//
// Ownership: render objects are made by a CRenderWorld (or by the character and fx systems)
// and belong to their caller until Release(), which removes them from the world; the world
// destroys them once no frame can still draw them.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>

namespace Kestrin::Renderer
{

using Kestrin::Utility::CBox3;
using Kestrin::Utility::CMatrix44;
using Kestrin::Utility::CVec3;

// The empty box of the engine: minimum 1e10, maximum -1e10 in each axis.
inline CBox3 EmptyBox()
{
    return CBox3{{1e10f, 1e10f, 1e10f}, {-1e10f, -1e10f, -1e10f}};
}

class CRenderObject
{
public:
    CRenderObject(const CRenderObject&) = delete;
    CRenderObject& operator=(const CRenderObject&) = delete;

    // Places the object and refreshes its world box.
    virtual void SetWorldTransform(const CMatrix44& mWorld) = 0;
    // The world box; empty while the object's resource is not loaded.
    virtual CBox3 GetBoundingBox() const = 0;
    virtual void SetVisible(bool bVisible) = 0;
    // The 64-bit layer mask matched against the view's visible groups; 0 never shows.
    virtual void SetChannelMask(uint64_t uMask) = 0;
    // Ray test (vDirection of unit length): against the oriented box, or with bExact against
    // the triangles. True and the distance along the ray on a hit.
    virtual bool HitTest(const CVec3& vStart, const CVec3& vDirection, bool bExact,
                         float& fDistance) const = 0;
    // Takes the object out of its world; the caller must not use it afterwards.
    virtual void Release() = 0;

protected:
    CRenderObject() = default;
    virtual ~CRenderObject() = default;
};

} // namespace Kestrin::Renderer
