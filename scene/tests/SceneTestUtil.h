// Shared steps of the scene tests: read and write through memory, describe an entity, and
// keep each byte-built file for the edtool resave test.
#pragma once

#include "scene/SceneClassDesc.h"
#include "scene/SceneContent.h"
#include "scene/tests/SceneBytes.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace SceneTest
{

bool ReadScene(const std::vector<uint8_t>& bytes, Ovrel::CSceneContent& scene,
               Ovrel::CSceneReadError* pError = nullptr);
std::vector<uint8_t> WriteScene(const Ovrel::CSceneContent& scene);
Expected Describe(Ovrel::CSceneEntity& entity);
// Files that resave byte for byte go to scene_test_files/exact/, files of older versions
// (which a save upgrades) to scene_test_files/upgraded/, under the working folder.
void KeepTestFile(const std::string& strName, const std::vector<uint8_t>& bytes, bool bExact,
                  const char* pcExtension = ".scene");
// A file with the header and the given records (each: type code and record bytes).
std::vector<uint8_t> SingleRecordFile(bool bBigEndian, uint32_t uType, const std::vector<uint8_t>& record);

// A fresh folder under the system's temporary folder, removed with everything in it.
class CTempFolder
{
public:
    CTempFolder();
    ~CTempFolder();
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;
    // The folder with a trailing '/'.
    const std::string& Path() const { return m_strPath; }
    std::string operator/(const std::string& strName) const { return m_strPath + strName; }

private:
    std::string m_strPath;
};

// A scene with no engine objects: every value stays in its entity.
inline void Headless(Ovrel::CSceneContent& scene)
{
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
}

// The lines the log takes while it lives.
class CLogLines
{
public:
    CLogLines()
    {
        GUtLog::Get().SetPreHook([this](bool, int, const char*, const char*, const char* pcText)
                                 { lines.push_back(pcText); });
    }
    ~CLogLines() { GUtLog::Get().SetPreHook(nullptr); }
    bool Has(const std::string& strLine) const
    {
        return std::find(lines.begin(), lines.end(), strLine) != lines.end();
    }
    std::vector<std::string> lines;
};

void WriteBytes(const std::string& strPath, const std::vector<uint8_t>& bytes);
void WriteText(const std::string& strPath, const std::string& strText);
// Empty when the file cannot be read.
std::vector<uint8_t> ReadBytes(const std::string& strPath);
std::string ReadText(const std::string& strPath);

} // namespace SceneTest
