#include "scene/SceneTypes.h"

#include <cstdio>

namespace Ovrel
{

const char* const g_apcSceneTreeFolders[SCENE_TREE_FOLDER_COUNT] = {
    "Mesh",        "Cloth", "Character", "Light",   "Fx",      "Sound",  "Occluder", "Zone/Portal",
    "Environment", "Group", "Camera",    "Locator", "Trigger", "Entity", "Water",
};

const CSceneFilter g_aSceneFilters[SCENE_FILTER_COUNT] = {
    {"All", ENTITY_ALL},
    {"Mesh", 0x2},
    {"Character", 0x4},
    {"Light", 0x400},
    {"Fx", 0x2000},
    {"Sound", 0x4000},
    {"Camera", 0x8000000},
    {"Occluder/Zone/Portal", 0xe00000},
    {"Locator/Entity", 0x16000000},
};

const char* GetSceneTreeFolder(uint32_t uType)
{
    switch (uType)
    {
        case ENTITY_STATIC_MESH:
            return "Mesh";
        case ENTITY_SKINNED_MESH:
            return "Character";
        case ENTITY_CLOTH:
            return "Cloth";
        case ENTITY_LIGHT:
            return "Light";
        case ENTITY_FX:
            return "Fx";
        case ENTITY_SOUND:
            return "Sound";
        case ENTITY_ENVIRONMENT:
            return "Environment";
        case ENTITY_OCCLUDER:
            return "Occluder";
        case ENTITY_PORTAL:
        case ENTITY_ZONE:
            return "Zone/Portal";
        case ENTITY_LOCATOR:
            return "Locator";
        case ENTITY_TRIGGER:
            return "Trigger";
        case ENTITY_CAMERA:
            return "Camera";
        case ENTITY_GAME_OBJECT:
            return "Entity";
        case ENTITY_GROUP:
            return "Group";
        default:
            return nullptr;
    }
}

void FormatSceneTreeFolderLabel(char* pcOut, int iSize, const char* pcFolder, int32_t iCount)
{
    snprintf(pcOut, static_cast<size_t>(iSize), "%s(%d)", pcFolder, iCount);
}

} // namespace Ovrel
