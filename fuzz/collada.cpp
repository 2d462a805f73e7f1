// libFuzzer target: CColladaFile reads any bytes without a crash; a document it accepts is
// written, read back, and gives the same triangle counts (of the primitives with positions,
// the ones the writer keeps).
#include "import/ColladaFile.h"

#include "Utils/Utility/GUtDebug.h"

#include <cstddef>
#include <cstdint>

using Kestrin::Utility::CColladaFile;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t uSize)
{
    static bool s_bQuiet = []
    {
        GUtLog::Get().EnableConsole(false);
        GUtLog::Get().EnableMainFile(false);
        GUtLog::Get().EnableWarningFile(false);
        GUtLog::Get().EnableErrorFile(false);
        GUtLog::Get().EnableCriticalFile(false);
        GUtLog::Get().EnableMessageBox(false);
        return true;
    }();
    (void)s_bQuiet;
    CColladaFile file;
    if (!file.ReadMemory(pData, uSize))
    {
        return 0;
    }
    std::vector<CColladaFile::NodeKey> aKeys;
    file.ForEachNode([&](const CColladaFile::Node& node) { file.GetNodeKeys(node, aKeys); });

    std::string strText;
    file.WriteMemory(strText);
    CColladaFile again;
    GUT_ASSERT(again.ReadMemory(strText.data(), strText.size()));
    GUT_ASSERT(again.Meshes().size() == file.Meshes().size());
    for (size_t i = 0; i < file.Meshes().size(); ++i)
    {
        uint32_t uTriangles = 0;
        for (const CColladaFile::Primitive& prim : file.Meshes()[i].aPrimitives)
        {
            uTriangles += prim.FindInput(CColladaFile::Semantic::Position) ? prim.TriangleCount() : 0;
        }
        GUT_ASSERT(again.Meshes()[i].TriangleCount() == uTriangles);
    }
    GUT_ASSERT(again.Lights().size() == file.Lights().size());
    return 0;
}
