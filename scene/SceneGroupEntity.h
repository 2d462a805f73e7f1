// Groups: a flat set of entities that move together. Groups cannot nest. Members are kept by
// id, so a group survives the recreation of its members (undo).
#pragma once

#include "scene/SceneEntity.h"

#include <cstdint>
#include <vector>

namespace Ovrel
{

class CGroupSceneEntity final : public CSceneEntity
{
public:
    explicit CGroupSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

    uint32_t GetType() const override { return ENTITY_GROUP; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    // Moves every member with the group: member x inverse(old) x new, where new has its axes
    // normalised and the new uniform length (the first axis's) multiplied back on. Members
    // that cannot hold scale get their rotation normalised. An unchanged matrix moves nothing.
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    // The union of the members' boxes, from the empty box.
    void GetBoundingBox(CBox3& box) const override;
    // A group is never hit itself; a hit on a member resolves to it while it is closed.

    bool TransferRecord(CSceneRecordIO& io);

    // Groups cannot nest and a group cannot join itself: false, nothing changes. Otherwise
    // the entity leaves its former group, its id is appended, and its groupId set.
    bool Add(CSceneEntity* pEntity);
    // Erases the id; clears the entity's groupId when it pointed here.
    void Remove(CSceneEntity* pEntity);
    // Clears groupId of every member still pointing here and empties the list.
    void ReleaseAll();
    bool Contains(int32_t iId) const;
    const std::vector<int32_t>& GetMembers() const { return m_members; }
    // Replaces the member ids as they are (import remapping); no groupId changes.
    void SetMembers(const std::vector<int32_t>& members) { m_members = members; }
    bool IsOpen() const { return m_uIsOpen != 0; }
    void SetOpen(bool bOpen) { m_uIsOpen = bOpen ? 1 : 0; }

private:
    std::vector<int32_t> m_members;
    CMatrix44 m_mTransform;
    uint8_t m_uIsOpen = 0;
};

} // namespace Ovrel
