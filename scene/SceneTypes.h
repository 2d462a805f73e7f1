// The scene's vocabulary: entity type codes (one bit each, so a set of kinds is a mask), the
// entity tree's folders and the editor's filter masks, and the tags and versions of the
// `.scene` and `.prop` files.
#pragma once

#include <cstdint>

namespace Ovrel
{

// Type codes, returned by CSceneEntity::GetType.
enum : uint32_t
{
    ENTITY_PLAIN = 1,
    ENTITY_STATIC_MESH = 2,
    ENTITY_SKINNED_MESH = 4,
    ENTITY_CLOTH = 8,
    ENTITY_LIGHT = 1024,
    ENTITY_FX = 8192,
    ENTITY_SOUND = 16384,
    ENTITY_ENVIRONMENT = 32768,
    ENTITY_OCCLUDER = 0x200000,
    ENTITY_PORTAL = 0x400000,
    ENTITY_ZONE = 0x800000,
    ENTITY_LOCATOR = 0x2000000,
    ENTITY_TRIGGER = 0x4000000,
    ENTITY_CAMERA = 0x8000000,
    ENTITY_GAME_OBJECT = 0x10000000,
    ENTITY_GROUP = 0x40000000,
};
constexpr uint32_t ENTITY_ALL = 0xFFFFFFFFu;

// The entity tree's folders, in tree order; no type maps to "Water".
constexpr int SCENE_TREE_FOLDER_COUNT = 15;
extern const char* const g_apcSceneTreeFolders[SCENE_TREE_FOLDER_COUNT];
// The folder of a type code, or null for the plain entity and unknown codes.
const char* GetSceneTreeFolder(uint32_t uType);
// A folder's label with its count, "%s(%d)".
void FormatSceneTreeFolderLabel(char* pcOut, int iSize, const char* pcFolder, int32_t iCount);

// The editor's filter list: label and type mask, in list order.
struct CSceneFilter
{
    const char* pcLabel;
    uint32_t uMask;
};
constexpr int SCENE_FILTER_COUNT = 9;
extern const CSceneFilter g_aSceneFilters[SCENE_FILTER_COUNT];

// A tag spells four letters with the first in the top byte.
constexpr uint32_t MakeSceneTag(char a, char b, char c, char d)
{
    return (static_cast<uint32_t>(static_cast<uint8_t>(a)) << 24) |
           (static_cast<uint32_t>(static_cast<uint8_t>(b)) << 16) |
           (static_cast<uint32_t>(static_cast<uint8_t>(c)) << 8) |
           static_cast<uint32_t>(static_cast<uint8_t>(d));
}

constexpr uint32_t TAG_SCENE = MakeSceneTag('S', 'C', 'E', 'N');
constexpr uint32_t TAG_BASE = MakeSceneTag('B', 'A', 'S', 'E');
constexpr uint32_t TAG_MESH = MakeSceneTag('M', 'E', 'S', 'H');
constexpr uint32_t TAG_SKIN = MakeSceneTag('S', 'K', 'I', 'N');
constexpr uint32_t TAG_CLOTH = MakeSceneTag('C', 'L', 'O', 'T');
constexpr uint32_t TAG_LIGHT = MakeSceneTag('L', 'I', 'T', ' ');
constexpr uint32_t TAG_FX = MakeSceneTag('F', 'X', ' ', ' ');
constexpr uint32_t TAG_SOUND = MakeSceneTag('S', 'N', 'D', ' ');
constexpr uint32_t TAG_ENVIRONMENT = MakeSceneTag('E', 'N', 'V', 'I');
constexpr uint32_t TAG_OCCLUDER = MakeSceneTag('O', 'C', 'C', ' ');
constexpr uint32_t TAG_PORTAL = MakeSceneTag('P', 'O', 'R', 'T');
constexpr uint32_t TAG_ZONE = MakeSceneTag('Z', 'O', 'N', 'E');
constexpr uint32_t TAG_LOCATOR = MakeSceneTag('L', 'O', 'C', 'A');
constexpr uint32_t TAG_TRIGGER = MakeSceneTag('T', 'R', 'I', 'G');
constexpr uint32_t TAG_CAMERA = MakeSceneTag('C', 'A', 'M', 'E');
constexpr uint32_t TAG_GAME_OBJECT = MakeSceneTag('G', 'A', 'M', 'E');
constexpr uint32_t TAG_GROUP = MakeSceneTag('G', 'R', 'O', 'U');
constexpr uint32_t TAG_PROP = MakeSceneTag('P', 'R', 'O', 'P');

// The versions the writer writes; a reader refuses anything above them.
constexpr int32_t SCENE_FILE_VERSION = 102;
constexpr int32_t BASE_VERSION = 102;
constexpr int32_t MESH_VERSION = 108;
constexpr int32_t SKIN_VERSION = 105;
constexpr int32_t CLOTH_VERSION = 100;
constexpr int32_t LIGHT_VERSION = 103;
constexpr int32_t FX_VERSION = 103;
constexpr int32_t SOUND_VERSION = 101;
constexpr int32_t ENVIRONMENT_VERSION = 110;
constexpr int32_t OCCLUDER_VERSION = 100;
constexpr int32_t PORTAL_VERSION = 100;
constexpr int32_t ZONE_VERSION = 101;
constexpr int32_t LOCATOR_VERSION = 102;
constexpr int32_t TRIGGER_VERSION = 101;
constexpr int32_t CAMERA_VERSION = 100;
constexpr int32_t GAME_OBJECT_VERSION = 102;
constexpr int32_t GROUP_VERSION = 101;
constexpr int32_t PROP_FILE_VERSION = 100;
constexpr int32_t PROP_MESH_VERSION = 100;

// Light group bits of the light property window.
enum : int32_t
{
    LIGHT_GROUP_MESH = 1,
    LIGHT_GROUP_CHARACTER = 2,
    LIGHT_GROUP_THIRD = 4,
};

// The id after iId. Ids wrap past the largest 32-bit value, as the game's counter does; id
// allocation then clamps to at least 1.
inline int32_t FollowingEntityId(int32_t iId)
{
    return static_cast<int32_t>(static_cast<uint32_t>(iId) + 1u);
}

// The 64-bit mask of one layer: bit L, none for L outside 0..63.
inline uint64_t LayerBit(int32_t iLayer)
{
    return (iLayer >= 0 && iLayer < 64) ? (uint64_t{1} << iLayer) : 0;
}

} // namespace Ovrel
