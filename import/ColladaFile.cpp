// CColladaFile: loading a document, the record helpers, lookups and matrix conversion.
#include "import/ColladaFile.h"

#include "import/ColladaReader.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtFile.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace Kestrin::Utility
{

namespace
{
// CDATA and entities are needed; whitespace-only text and comments are not.
constexpr unsigned int PARSE_FLAGS = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol;
// A bigger file is refused before its bytes are read.
constexpr int64_t MAX_FILE_SIZE = int64_t(1) << 30;
} // namespace

CColladaFile::CColladaFile() = default;
CColladaFile::~CColladaFile() = default;

void CColladaFile::Clear()
{
    CColladaFile empty;
    _Swap(empty);
    m_strError.clear();
}

void CColladaFile::_Swap(CColladaFile& other)
{
    std::swap(upAxis, other.upAxis);
    std::swap(m_fUnitMeter, other.m_fUnitMeter);
    std::swap(m_strUnitName, other.m_strUnitName);
    std::swap(m_strCreated, other.m_strCreated);
    std::swap(m_strModified, other.m_strModified);
    std::swap(m_fAnimStart, other.m_fAnimStart);
    pugi::xml_document document(std::move(m_document));
    m_document = std::move(other.m_document);
    other.m_document = std::move(document);
    std::swap(m_strError, other.m_strError);
    std::swap(m_aWarnings, other.m_aWarnings);
    std::swap(m_aImages, other.m_aImages);
    std::swap(m_aEffects, other.m_aEffects);
    std::swap(m_aMaterials, other.m_aMaterials);
    std::swap(m_aMeshes, other.m_aMeshes);
    std::swap(m_aSkins, other.m_aSkins);
    std::swap(m_aLights, other.m_aLights);
    std::swap(m_aCameras, other.m_aCameras);
    std::swap(m_aNodes, other.m_aNodes);
    std::swap(m_aLibraryNodes, other.m_aLibraryNodes);
    std::swap(m_aChannels, other.m_aChannels);
    std::swap(m_aAnimations, other.m_aAnimations);
    std::swap(m_aClips, other.m_aClips);
    std::swap(m_strSceneId, other.m_strSceneId);
}

// ---------------------------------------------------------------------------------------
// Reading

bool CColladaFile::Read(const char* pcPath)
{
    GUtFile file;
    if (!pcPath || !file.Open(pcPath, GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ, true))
    {
        m_strError = "cannot open the file";
        GUtLog::Get().DisplayMsg(LogError, "CColladaFile", "%s: %s", pcPath ? pcPath : "(null)",
                                 m_strError.c_str());
        return false;
    }
    int64_t iSize = file.Size();
    if (iSize > MAX_FILE_SIZE)
    {
        m_strError = "the file is larger than 1 GiB";
        GUtLog::Get().DisplayMsg(LogError, "CColladaFile", "%s: %s", pcPath, m_strError.c_str());
        return false;
    }
    // The bytes go straight into a buffer the document takes over and parses in place.
    size_t uSize = size_t(iSize);
    void* pBuffer = pugi::get_memory_allocation_function()(uSize ? uSize : 1);
    CColladaFile loaded;
    size_t uRead = 0;
    while (pBuffer && uRead < uSize)
    {
        int32_t iChunk = int32_t(std::min<size_t>(uSize - uRead, size_t(1) << 28));
        int32_t iGot = file.ReadRaw(static_cast<char*>(pBuffer) + uRead, iChunk);
        if (iGot <= 0)
        {
            break;
        }
        uRead += size_t(iGot);
    }
    if (!pBuffer || uRead != uSize)
    {
        pugi::get_memory_deallocation_function()(pBuffer);
        m_strError = "cannot read the file";
        GUtLog::Get().DisplayMsg(LogError, "CColladaFile", "%s: %s", pcPath, m_strError.c_str());
        return false;
    }
    pugi::xml_parse_result result =
        loaded.m_document.load_buffer_inplace_own(pBuffer, uSize, PARSE_FLAGS, pugi::encoding_auto);
    if (!result)
    {
        m_strError =
            std::string("not XML: ") + result.description() + " at byte " + std::to_string(result.offset);
        GUtLog::Get().DisplayMsg(LogError, "CColladaFile", "%s: %s", pcPath, m_strError.c_str());
        return false;
    }
    if (!loaded._ReadDocument(pcPath))
    {
        m_strError = loaded.m_strError;
        return false;
    }
    _Swap(loaded);
    return true;
}

bool CColladaFile::ReadMemory(const void* pData, size_t uSize)
{
    CColladaFile loaded;
    pugi::xml_parse_result result =
        loaded.m_document.load_buffer(pData, uSize, PARSE_FLAGS, pugi::encoding_auto);
    if (!result)
    {
        m_strError =
            std::string("not XML: ") + result.description() + " at byte " + std::to_string(result.offset);
        GUtLog::Get().DisplayMsg(LogError, "CColladaFile", "%s: %s", "(memory)", m_strError.c_str());
        return false;
    }
    if (!loaded._ReadDocument("(memory)"))
    {
        m_strError = loaded.m_strError;
        return false;
    }
    _Swap(loaded);
    return true;
}

// Runs the reading steps over the parsed document of a fresh object.
bool CColladaFile::_ReadDocument(const char* pcName)
{
    pugi::xml_node collada = m_document.document_element();
    if (strcmp(collada.name(), "COLLADA") != 0)
    {
        m_strError = std::string("not a Collada document (its root element is <") + collada.name() + ">)";
    }
    else
    {
        CColladaReader reader(*this);
        if (reader.Read(collada))
        {
            return true;
        }
        m_strError = reader.Error();
    }
    GUtLog::Get().DisplayMsg(LogError, "CColladaFile", "%s: %s", pcName, m_strError.c_str());
    return false;
}

// ---------------------------------------------------------------------------------------
// Records

uint32_t CColladaFile::Primitive::TriangleCount() const
{
    if (aVCount.empty())
    {
        return uStride ? uint32_t(aIndices.size() / (size_t(uStride) * 3)) : 0;
    }
    uint32_t uCount = 0;
    for (uint32_t u : aVCount)
    {
        uCount += u > 2 ? u - 2 : 0;
    }
    return uCount;
}

void CColladaFile::Primitive::Triangulate(std::vector<uint32_t>& aCorners) const
{
    if (aVCount.empty())
    {
        for (uint32_t i = 0, n = CornerCount() / 3 * 3; i < n; ++i)
        {
            aCorners.push_back(i);
        }
        return;
    }
    uint32_t uFirst = 0;
    for (uint32_t uCorners : aVCount)
    {
        for (uint32_t i = 1; i + 1 < uCorners; ++i)
        {
            aCorners.push_back(uFirst);
            aCorners.push_back(uFirst + i);
            aCorners.push_back(uFirst + i + 1);
        }
        uFirst += uCorners;
    }
}

const CColladaFile::Input* CColladaFile::Primitive::FindInput(Semantic eSemantic, uint32_t uNth) const
{
    const Input* apFound[16];
    uint32_t uFound = 0;
    for (const Input& input : aInputs)
    {
        if (input.eSemantic == eSemantic && uFound < 16)
        {
            apFound[uFound++] = &input;
        }
    }
    std::stable_sort(apFound, apFound + uFound,
                     [](const Input* a, const Input* b) { return a->iSet < b->iSet; });
    return uNth < uFound ? apFound[uNth] : nullptr;
}

uint32_t CColladaFile::Primitive::InputCount(Semantic eSemantic) const
{
    return uint32_t(std::count_if(aInputs.begin(), aInputs.end(),
                                  [eSemantic](const Input& input) { return input.eSemantic == eSemantic; }));
}

uint32_t CColladaFile::Mesh::TriangleCount() const
{
    uint32_t uCount = 0;
    for (const Primitive& prim : aPrimitives)
    {
        uCount += prim.TriangleCount();
    }
    return uCount;
}

int32_t CColladaFile::Mesh::FindSource(std::string_view strId) const
{
    for (size_t i = 0; i < aSources.size(); ++i)
    {
        if (aSources[i].id == strId)
        {
            return int32_t(i);
        }
    }
    return -1;
}

int32_t CColladaFile::Instance::MaterialFor(std::string_view strSymbol) const
{
    for (const MaterialBinding& binding : aMaterials)
    {
        if (binding.strSymbol == strSymbol)
        {
            return binding.iMaterial;
        }
    }
    return -1;
}

CMatrix44 CColladaFile::Node::WorldMatrix() const
{
    CMatrix44 m = mTransform;
    for (const Node* pParent = this->pParent; pParent; pParent = pParent->pParent)
    {
        m = m * pParent->mTransform;
    }
    return m;
}

// ---------------------------------------------------------------------------------------
// Lookups

namespace
{
template <typename T>
int32_t FindById(const std::vector<T>& aItems, std::string_view strId)
{
    for (size_t i = 0; i < aItems.size(); ++i)
    {
        if (aItems[i].id == strId)
        {
            return int32_t(i);
        }
    }
    return -1;
}

const CColladaFile::Node* FindNodeIn(const std::vector<std::unique_ptr<CColladaFile::Node>>& aNodes,
                                     std::string_view strId)
{
    for (const std::unique_ptr<CColladaFile::Node>& pNode : aNodes)
    {
        if (pNode->id == strId)
        {
            return pNode.get();
        }
        if (const CColladaFile::Node* pFound = FindNodeIn(pNode->aChildren, strId))
        {
            return pFound;
        }
    }
    return nullptr;
}

void VisitNodes(const std::vector<std::unique_ptr<CColladaFile::Node>>& aNodes,
                const std::function<void(const CColladaFile::Node&)>& fn)
{
    for (const std::unique_ptr<CColladaFile::Node>& pNode : aNodes)
    {
        fn(*pNode);
        VisitNodes(pNode->aChildren, fn);
    }
}
} // namespace

int32_t CColladaFile::FindMesh(std::string_view strId) const
{
    return FindById(m_aMeshes, strId);
}

int32_t CColladaFile::FindMaterial(std::string_view strId) const
{
    return FindById(m_aMaterials, strId);
}

int32_t CColladaFile::FindLight(std::string_view strId) const
{
    return FindById(m_aLights, strId);
}

const CColladaFile::Node* CColladaFile::FindNode(std::string_view strId) const
{
    const Node* pNode = FindNodeIn(m_aNodes, strId);
    return pNode ? pNode : FindNodeIn(m_aLibraryNodes, strId);
}

CColladaFile::Node* CColladaFile::FindNode(std::string_view strId)
{
    return const_cast<Node*>(static_cast<const CColladaFile*>(this)->FindNode(strId));
}

void CColladaFile::ForEachNode(const std::function<void(const Node&)>& fn) const
{
    VisitNodes(m_aNodes, fn);
}

// ---------------------------------------------------------------------------------------
// Matrices

// Collada's text is the column-vector matrix row by row: element (row r, column c) is
// pfValues[r * 4 + c]. The engine's row-vector matrix is its transpose.
CMatrix44 CColladaFile::MatrixFromCollada(const float* pfValues)
{
    CMatrix44 m;
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            m.m[c][r] = pfValues[r * 4 + c];
        }
    }
    return m;
}

void CColladaFile::MatrixToCollada(const CMatrix44& m, float* pfValues)
{
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            pfValues[r * 4 + c] = m.m[c][r];
        }
    }
}

uint32_t CColladaFile::Transform::ValueCount() const
{
    switch (eKind)
    {
        case TransformKind::Matrix:
            return 16;
        case TransformKind::Rotate:
            return 4;
        case TransformKind::LookAt:
            return 9;
        default:
            return 3;
    }
}

CMatrix44 CColladaFile::Transform::ToMatrix() const
{
    const float* f = afValues;
    switch (eKind)
    {
        case TransformKind::Matrix:
            return MatrixFromCollada(f);
        case TransformKind::Translate:
            return CMatrix44::Translation({f[0], f[1], f[2]});
        case TransformKind::Scale:
            return CMatrix44::Scaling({f[0], f[1], f[2]});
        case TransformKind::Rotate:
        {
            // Counter-clockwise about the axis, seen from its tip (right-handed), as rows.
            CVec3 a = Normalize(CVec3{f[0], f[1], f[2]});
            float fAngle = ToRadians(f[3]);
            float c = std::cos(fAngle), s = std::sin(fAngle), t = 1.0f - c;
            CMatrix44 m;
            if (LengthSq(a) == 0.0f)
            {
                return m;
            }
            m.m[0][0] = t * a.x * a.x + c;
            m.m[0][1] = t * a.x * a.y + s * a.z;
            m.m[0][2] = t * a.x * a.z - s * a.y;
            m.m[1][0] = t * a.x * a.y - s * a.z;
            m.m[1][1] = t * a.y * a.y + c;
            m.m[1][2] = t * a.y * a.z + s * a.x;
            m.m[2][0] = t * a.x * a.z + s * a.y;
            m.m[2][1] = t * a.y * a.z - s * a.x;
            m.m[2][2] = t * a.z * a.z + c;
            return m;
        }
        case TransformKind::LookAt:
        {
            // The object sits at the eye and looks down its -Z at the interest point.
            CVec3 eye{f[0], f[1], f[2]}, interest{f[3], f[4], f[5]}, up{f[6], f[7], f[8]};
            CVec3 z = Normalize(eye - interest);
            CVec3 x = Normalize(Cross(up, z));
            CVec3 y = Cross(z, x);
            CMatrix44 m;
            m.SetRow(0, x);
            m.SetRow(1, y);
            m.SetRow(2, z);
            m.SetRow(3, eye);
            return m;
        }
    }
    return CMatrix44();
}

// Collada multiplies each element on the right of the ones before it (column vectors), so
// the last element acts on a point first; with row vectors that is the leftmost factor.
CMatrix44 CColladaFile::ComposeTransforms(const std::vector<Transform>& aTransforms)
{
    CMatrix44 m;
    for (const Transform& transform : aTransforms)
    {
        m = transform.ToMatrix() * m;
    }
    return m;
}

const char* CColladaFile::SemanticName(Semantic eSemantic)
{
    switch (eSemantic)
    {
        case Semantic::Position:
            return "POSITION";
        case Semantic::Normal:
            return "NORMAL";
        case Semantic::Color:
            return "COLOR";
        case Semantic::Texcoord:
            return "TEXCOORD";
        case Semantic::Textangent:
            return "TEXTANGENT";
        case Semantic::Texbinormal:
            return "TEXBINORMAL";
        case Semantic::Other:
            break;
    }
    return "OTHER";
}

} // namespace Kestrin::Utility
