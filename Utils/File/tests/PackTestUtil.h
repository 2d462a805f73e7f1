// Helpers of the pack tests: a scratch folder, a capture of the log's messages, and pack
// files built byte by byte, independently of CPackFile's own writer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace PackTest
{

// A folder under /tmp removed with everything in it at destruction.
class CScratch
{
public:
    CScratch();
    ~CScratch();
    CScratch(const CScratch&) = delete;
    CScratch& operator=(const CScratch&) = delete;
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

struct CMessage
{
    bool bMessageBox;
    int iLevel;
    std::string title;
    std::string text;
};

// Collects every message of the log (and of the console stream) while it lives; boxes
// are kept off the screen.
class CLogCapture
{
public:
    CLogCapture();
    ~CLogCapture();
    CLogCapture(const CLogCapture&) = delete;
    CLogCapture& operator=(const CLogCapture&) = delete;
    std::vector<CMessage> Messages() const;
    bool Contains(const std::string& text) const;
    void Clear();
};

// Little-endian bytes.
class CBytes
{
public:
    CBytes& U8(uint8_t u);
    CBytes& U32(uint32_t u);
    CBytes& U64(uint64_t u);
    CBytes& Name(const std::string& name); // with its NUL
    CBytes& Raw(const std::string& bytes);
    CBytes& Zeros(size_t uCount);
    std::vector<uint8_t>& Data() { return m_data; }
    size_t Size() const { return m_data.size(); }

private:
    std::vector<uint8_t> m_data;
};

struct CHeaderFields
{
    uint8_t uFlag = 0;
    uint32_t uReserved = 0;
    uint64_t uReserved64 = 0;
};

// A version 106 pack: header as laid out, the directory compressed, then the data.
std::vector<uint8_t> MakePack106(const std::vector<uint8_t>& dir, const std::string& data,
                                 const CHeaderFields& fields = CHeaderFields(), uint32_t uVersion = 106);
// An older pack: 32-bit fields after the flag, the directory stored as is, data offsets absolute
// (the directory's offsets must already be absolute: data starts at DataStartOld(dir)).
std::vector<uint8_t> MakePackOld(uint32_t uVersion, bool bMagic, const std::vector<uint8_t>& dir,
                                 const std::string& data);
uint32_t DataStartOld(size_t uDirSize);

void WriteFile(const std::string& path, const std::vector<uint8_t>& bytes);
void WriteFile(const std::string& path, const std::string& bytes);
std::vector<uint8_t> ReadFile(const std::string& path);
uint32_t GetU32(const std::vector<uint8_t>& bytes, size_t uOffset);

} // namespace PackTest
