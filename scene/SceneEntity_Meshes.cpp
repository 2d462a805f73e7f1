// Static meshes and cloth: the render block, the shape list, the mesh render object and the
// physics actor they share.
#include "scene/SceneContent.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneMeshEntities.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>

namespace Ovrel
{

using Kestrin::Ext::CMeshRenderSettings;

namespace
{
const char* const LOG_TITLE = "Scene";

// The folder part of a data path, with its separator; paths may use either slash.
std::string FolderOf(const std::string& strPath)
{
    size_t iSlash = strPath.find_last_of("\\/");
    return iSlash == std::string::npos ? std::string() : strPath.substr(0, iSlash + 1);
}

// The file name without folder and extension.
std::string StemOf(const std::string& strPath)
{
    size_t iSlash = strPath.find_last_of("\\/");
    std::string strName = iSlash == std::string::npos ? strPath : strPath.substr(iSlash + 1);
    size_t iDot = strName.find_last_of('.');
    return iDot == std::string::npos ? strName : strName.substr(0, iDot);
}
} // namespace

// ---------------------------------------------------------------------------------------
// Shared record parts

void TransferRenderBlock(CSceneRecordIO& io, uint8_t& uVisible, CMeshRenderSettings& settings)
{
    io.U8("visible", uVisible);
    io.U8("lightMap", settings.uLightMap);
    io.U8("dynamicShadow", settings.uDynamicShadow);
    io.U8("renderFlagD", settings.uRenderFlagD);
    io.U8("renderFlagE", settings.uRenderFlagE);
    io.U16("skyLayer", settings.uSkyLayer);
    io.U16("decalLayer", settings.uDecalLayer);
    io.U16("renderOrderC", settings.uRenderOrderC);
    io.I16("blendLayer", settings.iBlendLayer);
    io.U8Signed("inOutDoor", settings.iInOutDoor);
    io.Vec3("tint", settings.vTint);
    io.F32("resolution", settings.fResolution);
    io.F32("lightMapParamA", settings.fLightMapParamA);
    io.F32("lightMapParamB", settings.fLightMapParamB);
}

void TransferShapes(CSceneRecordIO& io, std::vector<CCollisionShapeRecord>& shapes, bool bUpgradeAttack)
{
    // The count is 16 bits wide; a longer list is cut to what it can say.
    uint16_t uCount = static_cast<uint16_t>(std::min<size_t>(shapes.size(), 0xFFFF));
    io.U16("shapeCount", uCount);
    if (!io.Ok())
    {
        return;
    }
    if (io.IsReading())
    {
        std::vector<CCollisionShapeRecord> read(uCount);
        for (CCollisionShapeRecord& shape : read)
        {
            io.U32(nullptr, shape.uFlags);
            io.U16(nullptr, shape.uMaterial);
            if (bUpgradeAttack && (shape.uFlags & Kestrin::Physics::SHAPE_CHARACTER))
            {
                shape.uFlags |= Kestrin::Physics::SHAPE_ATTACK;
            }
        }
        if (io.Ok())
        {
            shapes.swap(read);
        }
        return;
    }
    io.BeginList("shapes");
    for (uint16_t i = 0; i < uCount; ++i)
    {
        io.BeginItem();
        io.U32("flags", shapes[i].uFlags);
        io.U16("material", shapes[i].uMaterial);
        io.EndItem();
    }
    io.EndList();
}

// ---------------------------------------------------------------------------------------
// CSceneMeshParts

CSceneMeshParts::~CSceneMeshParts()
{
    ReleasePhysics();
    DeleteRenderObject();
}

bool CSceneMeshParts::CreateRenderObject(const std::string& strFile, bool bAsync, const CMatrix44& mTransform,
                                         uint8_t uVisible, int32_t iLayer)
{
    DeleteRenderObject();
    m_strMeshFile = strFile;
    Kestrin::Ext::CRenderWorld* pWorld = m_pScene ? m_pScene->GetRenderWorld() : nullptr;
    if (!pWorld || strFile.empty())
    {
        return false;
    }
    m_pRenderObject = pWorld->CreateLodMeshObject(strFile, bAsync);
    if (!m_pRenderObject)
    {
        return false;
    }
    m_pRenderObject->SetNearFade(0.2f, 1);
    m_pRenderObject->SetRenderSettings(m_render);
    m_pRenderObject->SetWorldTransform(mTransform);
    m_pRenderObject->SetVisible(uVisible != 0);
    m_pRenderObject->SetChannelMask(LayerBit(iLayer));
    return true;
}

void CSceneMeshParts::DeleteRenderObject()
{
    if (m_pRenderObject)
    {
        m_pRenderObject->Release();
        m_pRenderObject = nullptr;
    }
}

std::string CSceneMeshParts::GetCollisionPath() const
{
    return FolderOf(m_strMeshFile) + m_strCollisionFile;
}

bool CSceneMeshParts::CreatePhysics(const CMatrix44& mTransform)
{
    ReleasePhysics();
    if (m_strCollisionFile.empty())
    {
        GUtLog::Get().DisplayMsg(false, LOG_TITLE, "LoadPhysicsObject fail: error fileName\n");
        return false;
    }
    Kestrin::Physics::CPhysicsWorld* pWorld = m_pScene ? m_pScene->GetPhysicsWorld() : nullptr;
    std::string strPath = GetCollisionPath();
    m_pPhysicsObject = pWorld ? pWorld->CreateObject(strPath, false) : nullptr;
    if (!m_pPhysicsObject)
    {
        GUtLog::Get().DisplayMsg(false, LOG_TITLE, "LoadPhysicsObject fail: fname: %s\n", strPath.c_str());
        return false;
    }
    GUtLog::Get().DisplayMsg(false, LOG_TITLE, "LoadPhysicsObject success filename:%s\n", strPath.c_str());
    ApplyShapes();
    SetTransform(mTransform);
    return true;
}

void CSceneMeshParts::DeletePhysics()
{
    if (!m_pPhysicsObject)
    {
        GUtLog::Get().DisplayMsg(false, LOG_TITLE, "DeletePhysicsObject fail: No CollisionShape");
        return;
    }
    GUtLog::Get().DisplayMsg(false, LOG_TITLE,
                             "DeletePhysicsObject: %s\n, CStaticMeshSceneEntity::DeletePhysicsObject()",
                             m_strCollisionFile.c_str());
    ReleasePhysics();
}

void CSceneMeshParts::ReleasePhysics()
{
    if (m_pPhysicsObject)
    {
        m_pPhysicsObject->Delete();
        m_pPhysicsObject = nullptr;
    }
}

void CSceneMeshParts::LoadCollision(const CMatrix44& mTransform)
{
    Kestrin::Physics::CPhysicsWorld* pWorld = m_pScene ? m_pScene->GetPhysicsWorld() : nullptr;
    if (!pWorld)
    {
        return;
    }
    if (!m_strCollisionFile.empty())
    {
        CreatePhysics(mTransform);
        return;
    }
    if (!m_pScene->IsEditorMode() || m_strMeshFile.empty())
    {
        return;
    }
    m_pPhysicsObject = pWorld->CreateObjectFromMesh(m_strMeshFile);
    if (!m_pPhysicsObject)
    {
        return;
    }
    // The shape now exists as a file of its own beside the mesh; the scene must say so.
    m_strCollisionFile = StemOf(m_strMeshFile) + ".col";
    m_shapes.resize(static_cast<size_t>(std::max(m_pPhysicsObject->GetShapeCount(), 0)));
    ApplyShapes();
    SetTransform(mTransform);
    m_pScene->SetNeedsResave(true);
}

void CSceneMeshParts::ApplyShapes()
{
    if (!m_pPhysicsObject)
    {
        return;
    }
    int32_t iActorShapes = m_pPhysicsObject->GetShapeCount();
    if (iActorShapes != static_cast<int32_t>(m_shapes.size()))
    {
        GUtLog::Get().DisplayMsg(false, LOG_TITLE, "Error NxActor Shape Num: ColShape Name  %s",
                                 m_strCollisionFile.c_str());
    }
    int32_t iCount = std::min(iActorShapes, static_cast<int32_t>(m_shapes.size()));
    for (int32_t i = 0; i < iCount; ++i)
    {
        const CCollisionShapeRecord& shape = m_shapes[static_cast<size_t>(i)];
        m_pPhysicsObject->SetShapeAttribute(i, shape.uFlags, shape.uMaterial);
    }
}

void CSceneMeshParts::SetTransform(const CMatrix44& mTransform)
{
    if (m_pPhysicsObject)
    {
        // The actor takes its pose unscaled and the scale apart.
        CVec3 vScale;
        CMatrix44 mPose = NormalizeAxes(mTransform, vScale);
        m_pPhysicsObject->SetPose(mPose);
        m_pPhysicsObject->SetScale(vScale);
    }
    if (m_pRenderObject)
    {
        m_pRenderObject->SetWorldTransform(mTransform);
    }
}

// ---------------------------------------------------------------------------------------
// CStaticMeshSceneEntity

CBox3 CSceneMeshParts::GetBoundingBox() const
{
    return m_pRenderObject ? m_pRenderObject->GetBoundingBox() : SceneEmptyBox();
}

bool CSceneMeshParts::HitTest(const CVec3& vStart, const CVec3& vDirection, bool bExact,
                              float& fDistance) const
{
    return m_pRenderObject && m_pRenderObject->HitTest(vStart, vDirection, bExact, fDistance);
}

void CSceneMeshParts::SetVisible(bool bVisible)
{
    if (m_pRenderObject)
    {
        m_pRenderObject->SetVisible(bVisible);
    }
}

void CSceneMeshParts::SetLayer(int32_t iLayer)
{
    if (m_pRenderObject)
    {
        m_pRenderObject->SetChannelMask(LayerBit(iLayer));
    }
}

int32_t CSceneMeshParts::ApplyLightMap(int32_t iIndex, int32_t iEntityId, bool bColor)
{
    const CAtlasEntry* pEntry = nullptr;
    if (m_pScene)
    {
        pEntry = (bColor ? m_pScene->GetColorLightMaps() : m_pScene->GetLightMaps()).GetEntry(iIndex);
        if (pEntry && pEntry->iEntityId != iEntityId)
        {
            pEntry = nullptr; // the rectangle is another entity's
        }
    }
    if (m_pRenderObject)
    {
        Kestrin::Renderer::CTexture* pTexture = pEntry ? pEntry->pTexture : nullptr;
        const CVec2 vOffset = pEntry ? pEntry->vOffset : CVec2{};
        const CVec2 vScale = pEntry ? pEntry->vScale : CVec2{1.0f, 1.0f};
        if (bColor)
        {
            m_pRenderObject->SetColorLightMap(pTexture, vOffset, vScale);
        }
        else
        {
            m_pRenderObject->SetLightMap(pTexture, vOffset, vScale);
        }
    }
    return pEntry ? iIndex : -1;
}

CStaticMeshSceneEntity::CStaticMeshSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene), m_parts(pScene)
{
    m_bBoundsFromEngine = true;
}

CStaticMeshSceneEntity::~CStaticMeshSceneEntity() = default;

bool CStaticMeshSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    ESceneBlock eBlock = io.Block(TAG_MESH, MESH_VERSION);
    if (eBlock != ESceneBlock::OK)
    {
        // The record stops here and the entity stays empty; only a short read fails.
        return eBlock != ESceneBlock::SHORT;
    }
    io.Matrix("transform", m_mTransform);
    if (io.Since(101))
    {
        io.I32("lightMapIndex", m_iLightMapIndex);
    }
    if (io.Since(106))
    {
        io.I32("colorLightMapIndex", m_iColorLightMapIndex);
    }
    io.String("meshFile", m_parts.m_strMeshFile);
    if (!m_parts.m_strMeshFile.empty())
    {
        TransferRenderBlock(io, m_uVisible, m_parts.m_render);
        if (io.Since(101))
        {
            io.U8("inShadow", m_parts.m_uInShadow);
        }
        if (io.Since(103))
        {
            io.F32("ambientIntensity", m_parts.m_fAmbientIntensity);
        }
        if (io.Since(108))
        {
            io.U8("waterRef", m_uWaterRef);
            io.F32("refPower", m_fRefPower);
        }
    }
    io.String("collisionFile", m_parts.m_strCollisionFile);
    if (io.Since(102))
    {
        TransferShapes(io, m_parts.m_shapes, io.IsReading() && io.Version() < 107);
    }
    if (io.Since(104))
    {
        io.U16("mirrorLayer", m_parts.m_uMirrorLayer);
    }
    if (io.Since(105))
    {
        io.Vec3("dColor", m_vDColor);
        io.Vec3("sColor", m_vSColor);
    }
    return io.Ok();
}

bool CStaticMeshSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CStaticMeshSceneEntity::Load(CIOStream& stream, bool bAsync)
{
    m_parts.DeleteRenderObject();
    m_parts.ReleasePhysics();
    return LoadRecord(*this, stream,
                      [&]
                      {
                          if (!m_parts.m_strMeshFile.empty())
                          {
                              CreateRenderObject(m_parts.m_strMeshFile, bAsync);
                          }
                          m_parts.LoadCollision(m_mTransform);
                      });
}

bool CStaticMeshSceneEntity::CreateRenderObject(const std::string& strFile, bool bAsync)
{
    return m_parts.CreateRenderObject(strFile, bAsync, m_mTransform, m_uVisible, m_iLayer);
}

bool CStaticMeshSceneEntity::IsLoading() const
{
    return m_parts.m_pRenderObject && m_parts.m_pRenderObject->IsLoading();
}

void CStaticMeshSceneEntity::OnLoaded()
{
    // The indices are checked against the tables only where a render object uses them.
    if (m_parts.m_pRenderObject)
    {
        ApplyLightMap(m_iLightMapIndex);
        ApplyColorLightMap(m_iColorLightMapIndex);
    }
}

void CStaticMeshSceneEntity::CollectAssets(IAssetCollector& helper)
{
    if (m_parts.m_pRenderObject)
    {
        helper.AddMesh(m_parts.m_pRenderObject->GetMeshName());
    }
    if (!m_parts.m_strCollisionFile.empty())
    {
        helper.AddCollisionShape(m_parts.GetCollisionPath());
    }
}

void CStaticMeshSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    m_parts.SetTransform(mTransform);
}

void CStaticMeshSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = m_parts.GetBoundingBox();
}

bool CStaticMeshSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return m_parts.HitTest(vStart, vDirection, false, fDistance);
}

bool CStaticMeshSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return m_parts.HitTest(vStart, vDirection, true, fDistance);
}

void CStaticMeshSceneEntity::SetVisible(bool bVisible)
{
    CSceneEntity::SetVisible(bVisible);
    m_parts.SetVisible(bVisible);
}

void CStaticMeshSceneEntity::SetLayer(int32_t iLayer)
{
    CSceneEntity::SetLayer(iLayer);
    m_parts.SetLayer(iLayer);
}

void CStaticMeshSceneEntity::SetResourceName(const std::string& strName)
{
    CreateRenderObject(strName, false);
}

void CStaticMeshSceneEntity::ApplyLightMap(int32_t iIndex)
{
    m_iLightMapIndex = m_parts.ApplyLightMap(iIndex, m_iId, false);
}

void CStaticMeshSceneEntity::ApplyColorLightMap(int32_t iIndex)
{
    m_iColorLightMapIndex = m_parts.ApplyLightMap(iIndex, m_iId, true);
}

void CStaticMeshSceneEntity::SetShapes(const std::vector<CCollisionShapeRecord>& shapes)
{
    m_parts.m_shapes = shapes;
    m_parts.ApplyShapes();
}

bool CStaticMeshSceneEntity::SetCollisionGroup(int32_t iShape, uint32_t uFlags)
{
    if (iShape < 0 || iShape >= static_cast<int32_t>(m_parts.m_shapes.size()))
    {
        return false;
    }
    CCollisionShapeRecord& shape = m_parts.m_shapes[static_cast<size_t>(iShape)];
    shape.uFlags = uFlags;
    if (m_parts.m_pPhysicsObject)
    {
        m_parts.m_pPhysicsObject->SetShapeAttribute(iShape, shape.uFlags, shape.uMaterial);
    }
    return true;
}

uint32_t CStaticMeshSceneEntity::GetCollisionGroup(int32_t iShape) const
{
    if (iShape < 0 || iShape >= static_cast<int32_t>(m_parts.m_shapes.size()))
    {
        return 0;
    }
    return m_parts.m_shapes[static_cast<size_t>(iShape)].uFlags;
}

void CStaticMeshSceneEntity::SetRenderSettings(const CMeshRenderSettings& settings)
{
    m_parts.m_render = settings;
    if (m_parts.m_pRenderObject)
    {
        m_parts.m_pRenderObject->SetRenderSettings(settings);
    }
}

void CStaticMeshSceneEntity::SetShadow(bool bLightMap, bool bDynamic)
{
    CMeshRenderSettings settings = m_parts.m_render;
    settings.uLightMap = bLightMap ? 1 : 0;
    settings.uDynamicShadow = bDynamic ? 1 : 0;
    SetRenderSettings(settings);
}

void CStaticMeshSceneEntity::SetShadowResolution(float fResolution)
{
    CMeshRenderSettings settings = m_parts.m_render;
    settings.fResolution = fResolution;
    SetRenderSettings(settings);
}

void CStaticMeshSceneEntity::SetWaterRef(uint8_t uWaterRef, float fRefPower)
{
    m_uWaterRef = uWaterRef;
    m_fRefPower = fRefPower;
}

// ---------------------------------------------------------------------------------------
// CClothSceneEntity

CClothSceneEntity::CClothSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene), m_parts(pScene)
{
    m_bBoundsFromEngine = true;
}

CClothSceneEntity::~CClothSceneEntity()
{
    DeleteClothObject();
}

void CClothSceneEntity::DeleteClothObject()
{
    if (m_pClothObject)
    {
        m_pClothObject->Delete();
        m_pClothObject = nullptr;
    }
}

bool CClothSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_CLOTH, CLOTH_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    io.I32("lightMapIndex", m_iLightMapIndex);
    io.String("meshFile", m_parts.m_strMeshFile);
    if (!m_parts.m_strMeshFile.empty())
    {
        TransferRenderBlock(io, m_uVisible, m_parts.m_render);
        io.U8("inShadow", m_parts.m_uInShadow);
        io.F32("ambientIntensity", m_parts.m_fAmbientIntensity);
    }
    io.String("collisionFile", m_parts.m_strCollisionFile);
    io.F32("bending", m_cloth.fBending);
    io.F32("stretching", m_cloth.fStretching);
    io.F32("friction", m_cloth.fFriction);
    io.F32("thickness", m_cloth.fThickness);
    io.Vec3("wind", m_cloth.vWind);
    io.F32("damping", m_cloth.fDamping);
    TransferShapes(io, m_parts.m_shapes, false);
    io.U16("mirrorLayer", m_parts.m_uMirrorLayer);
    return io.Ok();
}

bool CClothSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CClothSceneEntity::Load(CIOStream& stream, bool bAsync)
{
    m_parts.DeleteRenderObject();
    m_parts.ReleasePhysics();
    DeleteClothObject();
    return LoadRecord(*this, stream,
                      [&]
                      {
                          if (!m_parts.m_strMeshFile.empty())
                          {
                              CreateRenderObject(m_parts.m_strMeshFile, bAsync);
                          }
                          m_parts.LoadCollision(m_mTransform);
                      });
}

bool CClothSceneEntity::CreateRenderObject(const std::string& strFile, bool bAsync)
{
    DeleteClothObject();
    bool bBuilt = m_parts.CreateRenderObject(strFile, bAsync, m_mTransform, m_uVisible, m_iLayer);
    Kestrin::Physics::CPhysicsWorld* pWorld = m_pScene ? m_pScene->GetPhysicsWorld() : nullptr;
    if (bBuilt && pWorld)
    {
        m_pClothObject = pWorld->CreateCloth(strFile);
        if (m_pClothObject)
        {
            m_pClothObject->SetParameters(m_cloth);
            m_pClothObject->SetPose(m_mTransform);
        }
    }
    return bBuilt;
}

bool CClothSceneEntity::IsLoading() const
{
    return m_parts.m_pRenderObject && m_parts.m_pRenderObject->IsLoading();
}

void CClothSceneEntity::OnLoaded()
{
    if (m_parts.m_pRenderObject)
    {
        ApplyLightMap(m_iLightMapIndex);
    }
}

void CClothSceneEntity::ApplyLightMap(int32_t iIndex)
{
    m_iLightMapIndex = m_parts.ApplyLightMap(iIndex, m_iId, false);
}

void CClothSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    m_parts.SetTransform(mTransform);
    if (m_pClothObject)
    {
        m_pClothObject->SetPose(mTransform);
    }
}

void CClothSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = m_parts.GetBoundingBox();
}

bool CClothSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return m_parts.HitTest(vStart, vDirection, false, fDistance);
}

bool CClothSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return m_parts.HitTest(vStart, vDirection, true, fDistance);
}

void CClothSceneEntity::Update(float, float fDelta)
{
    if (m_pClothObject)
    {
        m_pClothObject->Update(fDelta);
    }
}

void CClothSceneEntity::SetVisible(bool bVisible)
{
    CSceneEntity::SetVisible(bVisible);
    m_parts.SetVisible(bVisible);
}

void CClothSceneEntity::SetLayer(int32_t iLayer)
{
    CSceneEntity::SetLayer(iLayer);
    m_parts.SetLayer(iLayer);
}

void CClothSceneEntity::SetResourceName(const std::string& strName)
{
    CreateRenderObject(strName, false);
}

void CClothSceneEntity::SetParameters(const Kestrin::Physics::CClothParameters& parameters)
{
    m_cloth = parameters;
    if (m_pClothObject)
    {
        m_pClothObject->SetParameters(parameters);
    }
}

void CClothSceneEntity::SetRenderSettings(const CMeshRenderSettings& settings)
{
    m_parts.m_render = settings;
    if (m_parts.m_pRenderObject)
    {
        m_parts.m_pRenderObject->SetRenderSettings(settings);
    }
}

} // namespace Ovrel
