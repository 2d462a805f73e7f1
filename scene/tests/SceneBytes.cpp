#include "scene/tests/SceneBytes.h"

#include <cstdio>

namespace SceneTest
{

std::string FormatFloat(float f)
{
    char acText[32];
    snprintf(acText, sizeof(acText), "%.9g", static_cast<double>(f));
    return acText;
}

void CCollectVisitor::OnBlock(uint32_t uTag, int32_t iVersion)
{
    std::string strTag;
    for (int iShift = 24; iShift >= 0; iShift -= 8)
    {
        strTag += static_cast<char>((uTag >> iShift) & 0xFF);
    }
    while (!strTag.empty() && strTag.back() == ' ')
    {
        strTag.pop_back();
    }
    values["@" + strTag] = std::to_string(iVersion);
}

void CCollectVisitor::OnFloats(const char* pcName, const float* pf, int32_t iCount)
{
    std::string strKey = Key(pcName);
    if (iCount == 1)
    {
        values[strKey] = FormatFloat(pf[0]);
        return;
    }
    for (int32_t i = 0; i < iCount; ++i)
    {
        values[strKey + "." + std::to_string(i)] = FormatFloat(pf[i]);
    }
}

void CCollectVisitor::OnBytes(const char* pcName, const uint8_t* p, int32_t iCount)
{
    std::string strKey = Key(pcName);
    for (int32_t i = 0; i < iCount; ++i)
    {
        values[strKey + "[" + std::to_string(i) + "]"] = std::to_string(p[i]);
    }
}

void CCollectVisitor::BeginList(const char* pcName)
{
    m_lists.push_back({pcName ? pcName : "", -1});
}

void CCollectVisitor::BeginItem()
{
    ++m_lists.back().iIndex;
    m_bInItem = true;
}

std::string CCollectVisitor::Key(const char* pcName)
{
    if (m_lists.empty())
    {
        return pcName ? pcName : "";
    }
    CList& list = m_lists.back();
    if (!m_bInItem)
    {
        ++list.iIndex;
    }
    std::string strKey = list.strName + "[" + std::to_string(list.iIndex) + "]";
    return pcName ? strKey + "." + pcName : strKey;
}

std::string CompareFields(const Expected& expected, const Expected& actual)
{
    std::string strDiff;
    for (const auto& [strName, strValue] : expected)
    {
        auto it = actual.find(strName);
        if (it == actual.end())
        {
            strDiff += strName + ": missing\n";
        }
        else if (it->second != strValue)
        {
            strDiff += strName + ": " + it->second + ", expected " + strValue + "\n";
        }
    }
    return strDiff;
}

} // namespace SceneTest
