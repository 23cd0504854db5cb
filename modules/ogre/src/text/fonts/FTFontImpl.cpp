#include "text/fonts/FTFontImpl.h"

#include <OgreEntity.h>
#include <OgreHardwareBufferManager.h>
#include <OgreMesh.h>
#include <OgreMeshManager.h>
#include <OgreRoot.h>
#include <OgreSceneManager.h>
#include <OgreSubMesh.h>

#include <algorithm>

#include "core/MVNGeneratorStringId.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "text/fonts/FTExtrudeGlyph.h"
#include "text/fonts/FTFont.h"

namespace {
bool isBreak(uint32_t c) { return c == 10 || c == 13; }

// The bounds come from the vertices we hold: the buffers are write-only.
template <typename It, typename Position>
void setBounds(const Ogre::MeshPtr& mesh, It begin, It end, Position position) {
    Ogre::AxisAlignedBox box;
    for (It it = begin; it != end; ++it) box.merge(position(*it));
    mesh->_setBounds(box, false);
    if (box.isFinite())
        mesh->_setBoundingSphereRadius(std::max(box.getMaximum().length(), box.getMinimum().length()));
}
}  // namespace

FTFontImpl::FTFontImpl(FTFont* owner, const std::string& fontFile, const std::string& backupPath, int flags)
    : face(fontFile, flags), backupFace(backupPath, flags), load_flags(flags), intf(owner) {
    err = face.Error();
    backupErr = backupFace.Error();
}

FTFontImpl::~FTFontImpl() = default;

bool FTFontImpl::CharMap(FT_Encoding encoding) {
    bool ok = face.CharMap(encoding);
    err = face.Error();
    // A fallback without that map keeps its default one.
    backupFace.CharMap(encoding);
    return ok;
}

bool FTFontImpl::FaceSize(unsigned int s, unsigned int resolution) {
    glyphList.clear();
    mainIndex.clear();
    size = s;
    if (!face.Size(s, resolution)) {
        err = face.Error();
        return false;
    }
    if (!backupFace.Size(s, resolution)) {
        backupErr = backupFace.Error();
        return false;
    }
    err = 0;
    backupErr = 0;
    return true;
}

bool FTFontImpl::CheckGlyph(uint32_t c) {
    if (glyphList.count(c) != 0) return true;
    unsigned int index = face.CharIndex(c);
    FT_GlyphSlot slot = nullptr;
    bool fromMain = false;
    if (index != 0) {
        slot = face.LoadGlyph(index);
        fromMain = slot != nullptr;
        if (slot == nullptr) {
            slot = backupFace.LoadGlyph(backupFace.CharIndex(c));
            if (slot == nullptr) {
                err = face.Error();
                return false;
            }
        }
    } else {
        // Not in the main font: the fallback's glyph. A character neither
        // face maps is skipped without an error: a .notdef box in a title
        // is worse than a gap.
        const unsigned int backupIndex = backupFace.CharIndex(c);
        if (backupIndex == 0) return false;
        slot = backupFace.LoadGlyph(backupIndex);
        if (slot == nullptr) {
            backupErr = backupFace.Error();
            return false;
        }
    }
    FTGlyph* glyph = intf->MakeGlyph(slot);
    if (glyph == nullptr) {
        FT_Error& e = index != 0 ? err : backupErr;
        if (e == 0) e = 19;
        return false;
    }
    glyphList[c].reset(glyph);
    if (fromMain) mainIndex[c] = index;
    return true;
}

const FTGlyph* FTFontImpl::Glyph(uint32_t c) const {
    auto it = glyphList.find(c);
    return it != glyphList.end() ? it->second.get() : nullptr;
}

float FTFontImpl::Advance(uint32_t c, uint32_t next) {
    const FTGlyph* glyph = Glyph(c);
    if (glyph == nullptr) return 0.0f;
    float advance = glyph->Advance();
    auto a = mainIndex.find(c), b = mainIndex.find(next);
    if (next != 0 && a != mainIndex.end() && b != mainIndex.end()) advance += face.KernAdvance(a->second, b->second);
    return advance;
}

void FTFontImpl::measure(const std::u32string& text, size_t count, FTPoint3 spacing, std::map<int, float>& rows) {
    int row = 0;
    float w = 0.0f, rowMax = 0.0f;
    float lower = 0.0f, upper = 0.0f;
    bool inked = false;
    maxAdvance = 0.0f;
    for (size_t i = 0; i < count; ++i) {
        uint32_t c = text[i];
        if (isBreak(c)) {
            w = 0.0f;
            rowMax = 0.0f;
            ++row;
            continue;
        }
        if (!CheckGlyph(c)) continue;
        uint32_t next = i + 1 < count ? text[i + 1] : 0;
        float advance = Advance(c, next);
        w += advance + (next != 0 ? spacing.x : 0.0f);
        rowMax = std::max(w, rowMax);
        rows[row] = rowMax;
        maxAdvance = std::max(maxAdvance, advance + (next != 0 ? spacing.x : 0.0f));
        const FTGlyph* glyph = Glyph(c);
        if (glyph->HasInk()) {
            lower = inked ? std::min(lower, glyph->BBoxLowerY()) : glyph->BBoxLowerY();
            upper = inked ? std::max(upper, glyph->BBoxUpperY()) : glyph->BBoxUpperY();
            inked = true;
        }
    }
    if (count == 0) return;
    for (int r = 0; r <= row; ++r) rows.emplace(r, 0.0f);
    // A descender makes the row smaller: rows are spaced by the ink above
    // the baseline less the ink below it.
    rowHeight = lower > 0.0f ? std::max(0.0f, upper) : std::max(0.0f, upper + lower);
    width = 0.0f;
    for (const auto& r : rows) width = std::max(width, r.second);
}

void FTFontImpl::glyphVertices(uint32_t c, const FTPoint3& pen, FTVertexList& out,
                               std::vector<FTExtrudeVertex>* frontList, std::vector<FTExtrudeVertex>* sideList) {
    const FTGlyph* glyph = Glyph(c);
    if (three) {
        static_cast<const FTExtrudeGlyph*>(glyph)->Emit(pen.x, pen.y, pen.z, *frontList, *sideList);
        return;
    }
    auto cached = glyphCache.find(c);
    if (cached == glyphCache.end() || cached->second.empty()) {
        FTVertexList fresh;
        glyph->Vertices(0.0f, 0.0f, 0.0f, fresh);
        cached = glyphCache.insert_or_assign(c, std::move(fresh)).first;
    }
    out.reserve(out.size() + cached->second.size());
    for (const FTPoint3& p : cached->second) out.push_back({p.x + pen.x, p.y + pen.y, p.z + pen.z});
}

FTPoint3 FTFontImpl::renderRows(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                                FTPoint3 spacing, int align) {
    size_t count = maxChars < 0 ? text.size() : std::min(text.size(), static_cast<size_t>(maxChars));
    std::map<int, float> rows;
    width = height = maxAdvance = rowHeight = 0.0f;
    measure(text, count, spacing, rows);
    if (rows.empty()) return FTPoint3{0.0f, 0.0f, 0.0f};
    const int rowCount = static_cast<int>(rows.size());
    height = rowCount * rowHeight + (rowCount - 1) * (0.5f * rowHeight + spacing.y);
    auto rowX = [&](int row, bool last) {
        switch (align) {
            case 0: return -canvasWidth / 2.0f;
            case 1: return canvasWidth / 2.0f - rows[row] + (last ? 0.0f : spacing.x);
            default: return -rows[row] / 2.0f;
        }
    };
    FTPoint3 pen = position;
    pen.x += rowX(0, false);
    pen.y += rowCount == 1 ? -height / 2.0f : height / 2.0f - rowHeight;
    int row = 0;
    FTVertexList list;
    std::vector<FTExtrudeVertex> frontList, sideList;
    for (size_t i = 0; i < count; ++i) {
        uint32_t c = text[i];
        uint32_t next = i + 1 < count ? text[i + 1] : 0;
        if (isBreak(c)) {
            ++row;
            pen.x = position.x + rowX(row, row == rowCount - 1);
            pen.y -= rowHeight * 1.5f + spacing.y;
            continue;
        }
        if (CheckGlyph(c)) {
            glyphVertices(c, pen, list, &frontList, &sideList);
            pen.x += Advance(c, next);
            if (perGlyph) {
                if (three) createExtrudeMesh(frontList, sideList);
                else createFlatMesh(list);
                list.clear();
                frontList.clear();
                sideList.clear();
            }
        }
        if (next != 0) pen.x += spacing.x;
    }
    if (!perGlyph) createFlatMesh(list);
    height += rowHeight;
    return pen;
}

FTPoint3 FTFontImpl::renderColumns(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                                   FTPoint3 spacing, int align) {
    size_t count = maxChars < 0 ? text.size() : std::min(text.size(), static_cast<size_t>(maxChars));
    std::map<int, float> rows;
    width = height = maxAdvance = rowHeight = 0.0f;
    measure(text, count, spacing, rows);
    if (rows.empty()) return FTPoint3{0.0f, 0.0f, 0.0f};
    int chars = 0;
    for (size_t i = 0, run = 0; i <= count; ++i) {
        if (i == count || isBreak(text[i])) {
            chars = std::max(chars, static_cast<int>(run));
            run = 0;
        } else {
            ++run;
        }
    }
    const int columns = static_cast<int>(rows.size());
    width = columns * maxAdvance + (columns - 1) * spacing.x;
    height = chars * rowHeight + (chars - 1) * (0.5f * rowHeight + spacing.y);
    const float top = canvasHeight / 2.0f - rowHeight * 1.5f;
    FTPoint3 pen = position;
    switch (align) {
        case 0:
            pen.x += -canvasWidth / 2.0f + width - maxAdvance * 0.75f;
            break;
        case 1:
            pen.x += canvasWidth / 2.0f - maxAdvance * 1.25f;
            break;
        default:
            pen.x += columns > 1 ? width / 2.0f - maxAdvance : -width / 2.0f;
            pen.y += top;
            break;
    }
    FTVertexList list;
    std::vector<FTExtrudeVertex> frontList, sideList;
    for (size_t i = 0; i < count; ++i) {
        uint32_t c = text[i];
        if (isBreak(c)) {
            pen.x -= maxAdvance + spacing.x;
            pen.y = position.y + top;
            continue;
        }
        if (CheckGlyph(c)) {
            glyphVertices(c, pen, list, &frontList, &sideList);
            if (perGlyph) {
                if (three) createExtrudeMesh(frontList, sideList);
                else createFlatMesh(list);
                list.clear();
                frontList.clear();
                sideList.clear();
            }
        }
        pen.y -= rowHeight * 1.5f + spacing.y;
    }
    if (!perGlyph) createFlatMesh(list);
    width += maxAdvance * 0.5f;
    height += rowHeight * 0.5f;
    return pen;
}

void FTFontImpl::getTextObjInfo(float& w, float& h, float& advance, float& row) const {
    w = width;
    h = height;
    advance = maxAdvance;
    row = rowHeight;
}

int FTFontImpl::createFlatMesh(const FTVertexList& vertices) {
    if (vertices.empty()) return -1;
    std::string name = Morvane::MVNGeneratorStringId::getSingleton()->genStringId("objMesh");
    Ogre::MeshPtr mesh = Ogre::MeshManager::getSingleton().createManual(name, "General");
    mesh->sharedVertexData = new Ogre::VertexData();
    mesh->sharedVertexData->vertexCount = vertices.size();
    mesh->sharedVertexData->vertexStart = 0;
    Ogre::VertexDeclaration* decl = mesh->sharedVertexData->vertexDeclaration;
    decl->addElement(0, 0, Ogre::VET_FLOAT3, Ogre::VES_POSITION);
    Ogre::HardwareVertexBufferSharedPtr buffer = Ogre::HardwareBufferManager::getSingleton().createVertexBuffer(
        decl->getVertexSize(0), vertices.size(), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY, false);
    float* out = static_cast<float*>(buffer->lock(Ogre::HardwareBuffer::HBL_DISCARD));
    for (const FTPoint3& v : vertices) {
        // Flat text lies in the plane of its node.
        *out++ = v.x;
        *out++ = v.y;
        *out++ = 0.0f;
    }
    buffer->unlock();
    mesh->sharedVertexData->vertexBufferBinding->setBinding(0, buffer);
    Ogre::SubMesh* sub = mesh->createSubMesh("TextObjSubMesh");
    sub->useSharedVertices = true;
    sub->operationType = Ogre::RenderOperation::OT_TRIANGLE_STRIP;
    setBounds(mesh, vertices.begin(), vertices.end(), [](const FTPoint3& v) { return Ogre::Vector3(v.x, v.y, 0); });
    mesh->load();
    attach(name);
    return 0;
}

int FTFontImpl::createExtrudeMesh(const std::vector<FTExtrudeVertex>& frontList,
                                  const std::vector<FTExtrudeVertex>& sideList) {
    const size_t n = frontList.size() + sideList.size();
    if (n == 0) return -1;
    std::string name = Morvane::MVNGeneratorStringId::getSingleton()->genStringId("objMesh");
    Ogre::MeshPtr mesh = Ogre::MeshManager::getSingleton().createManual(name, "General");
    mesh->sharedVertexData = new Ogre::VertexData();
    mesh->sharedVertexData->vertexCount = n;
    Ogre::VertexDeclaration* decl = mesh->sharedVertexData->vertexDeclaration;
    decl->addElement(0, 0, Ogre::VET_FLOAT3, Ogre::VES_POSITION);
    decl->addElement(1, 0, Ogre::VET_FLOAT3, Ogre::VES_NORMAL);
    decl->addElement(2, 0, Ogre::VET_FLOAT2, Ogre::VES_TEXTURE_COORDINATES);
    Ogre::HardwareBufferManager& manager = Ogre::HardwareBufferManager::getSingleton();
    Ogre::HardwareVertexBufferSharedPtr buffers[3];
    float* out[3];
    for (unsigned short s = 0; s < 3; ++s) {
        buffers[s] = manager.createVertexBuffer(decl->getVertexSize(s), n, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY,
                                                false);
        out[s] = static_cast<float*>(buffers[s]->lock(Ogre::HardwareBuffer::HBL_DISCARD));
    }
    auto put = [&](const FTExtrudeVertex& v) {
        *out[0]++ = v.px;
        *out[0]++ = v.py;
        *out[0]++ = v.pz;
        *out[1]++ = v.nx;
        *out[1]++ = v.ny;
        *out[1]++ = v.nz;
        *out[2]++ = v.u;
        *out[2]++ = v.v;
    };
    for (const FTExtrudeVertex& v : frontList) put(v);
    for (const FTExtrudeVertex& v : sideList) put(v);
    for (unsigned short s = 0; s < 3; ++s) {
        buffers[s]->unlock();
        mesh->sharedVertexData->vertexBufferBinding->setBinding(s, buffers[s]);
    }
    Ogre::SubMesh* sub = mesh->createSubMesh("TextObjSubMesh");
    sub->useSharedVertices = true;
    sub->operationType = Ogre::RenderOperation::OT_TRIANGLE_STRIP;
    // One glyph stays far below 65536 vertices; a 16-bit index is enough.
    sub->indexData->indexCount = n;
    sub->indexData->indexStart = 0;
    sub->indexData->indexBuffer =
        manager.createIndexBuffer(Ogre::HardwareIndexBuffer::IT_16BIT, n, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
    uint16_t* index = static_cast<uint16_t*>(sub->indexData->indexBuffer->lock(Ogre::HardwareBuffer::HBL_DISCARD));
    for (size_t i = 0; i < n; ++i) index[i] = static_cast<uint16_t>(i);
    sub->indexData->indexBuffer->unlock();
    auto position = [](const FTExtrudeVertex& v) { return Ogre::Vector3(v.px, v.py, v.pz); };
    setBounds(mesh, frontList.begin(), frontList.end(), position);
    Ogre::AxisAlignedBox box = mesh->getBounds();
    for (const FTExtrudeVertex& v : sideList) box.merge(position(v));
    mesh->_setBounds(box, false);
    mesh->_setBoundingSphereRadius(std::max(box.getMaximum().length(), box.getMinimum().length()));
    mesh->load();
    attach(name);
    return 0;
}

void FTFontImpl::attach(const std::string& meshName) {
    Ogre::SceneManager* manager = nullptr;
    std::string nodeName;
    if (direct) {
        Morvane::MVNOgreContextBase* context = Morvane::MVNOgreManager::getSingleton()->getOgreContext();
        manager = context != nullptr ? context->getSceneManager() : nullptr;
        nodeName = "_TextMorVaneNode" + textID;
    } else {
        std::string managerName = "_TextRttTrackMgr" + std::to_string(zOrder);
        if (Ogre::Root::getSingleton().hasSceneManager(managerName))
            manager = Ogre::Root::getSingleton().getSceneManager(managerName);
        nodeName = "_TextRttIndexNode" + textID;
    }
    // Without the clip's node the mesh stays unshown.
    if (manager == nullptr || !manager->hasSceneNode(nodeName)) return;
    Ogre::Entity* entity = manager->createEntity(meshName);
    Ogre::SceneNode* node = manager->getSceneNode(nodeName)->createChildSceneNode(
        Morvane::MVNGeneratorStringId::getSingleton()->genStringId("textNode"));
    node->attachObject(entity);
    if (!three && outlinePass) {
        // Same priority as the fill, so that the clip below keeps its
        // place under the whole title; one unit behind the fill, so that
        // the depth sort of the queue draws it first.
        entity->setMaterialName("_TextRttIndexOutlineMat" + textID);
        entity->setRenderQueueGroupAndPriority(50, static_cast<Ogre::ushort>(std::max(zOrder, 0)));
        node->setPosition(0, 0, -1);
    } else {
        entity->setMaterialName("_TextRttIndexMat" + textID);
        entity->setRenderQueueGroupAndPriority(50, static_cast<Ogre::ushort>(zOrder));
    }
    node->setVisible(false, true);
}
