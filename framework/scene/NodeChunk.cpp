// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/NodeChunk.h"

#include "framework/multires/LevelGeometry.h"
#include "framework/scene/SceneChunks.h"
#include "host/ClassDesc.h"

#include <memory>
#include <optional>
#include <utility>

namespace trovik {

namespace {

/// The parent of a node is a level, given by its number, or the geometry, given by this value.
constexpr uint32_t geometryParent = 0xffffffffu;
/// Maximum depth of a tree of nodes. No real tree is that deep; the limit prevents a damaged file
/// from exhausting the stack.
constexpr uint32_t deepest = 16;

/// The neighbour table of patches: a row of faceTableRow faces for each face of its level.
constexpr const char* faceTableClass = "PatchMap";
constexpr uint32_t faceTableRow = 10;
constexpr uint32_t noFace = 0xffffffffu;

/// Code that uses the table does not check its face numbers, so they are checked here.
class FaceTableStream : public SceneStream {
public:
    /// If `faces` is not set, a store is read without checks.
    FaceTableStream(const SceneStream& content, std::optional<uint32_t> faces)
        : SceneStream(content), faceCount(faces) {}

    void ReadStore(Store<uint32_t>& store) override {
        SceneStream::ReadStore(store);
        if (!faceCount) return;
        if (store.fill != 0 && store.fill != uint64_t{*faceCount} * faceTableRow) {
            Refuse(QStringLiteral("a table of %1 entries does not match %2 faces")
                       .arg(store.fill)
                       .arg(*faceCount));
        }
        for (uint32_t i = 0; i < store.fill; ++i) {
            if (store.array[i] < *faceCount || store.array[i] == noFace) continue;
            Refuse(QStringLiteral("there is no face %1").arg(store.array[i]));
        }
    }

private:
    std::optional<uint32_t> faceCount;
};

/// Sets the face count of a level to 0 for the lifetime of this object.
class NoFaces {
public:
    explicit NoFaces(LevelMesh* hidden)
        : level(hidden), faces(level == nullptr ? 0 : std::exchange(level->faceCount, 0u)) {}
    ~NoFaces() {
        if (level != nullptr) level->faceCount = faces;
    }
    NoFaces(const NoFaces&) = delete;
    NoFaces& operator=(const NoFaces&) = delete;

private:
    LevelMesh* level;
    uint32_t faces;
};

/// Only concrete classes can be created; an abstract class has no nodes of its own in a file.
bool CanBeCreated(const ClassDesc& desc) {
    const std::unique_ptr<Node> sample(desc.Create());
    return dynamic_cast<TreeNode*>(sample.get()) != nullptr;
}

std::vector<TreeNode*> SavedChildren(const TreeNode& parent) {
    std::vector<TreeNode*> list;
    for (TreeNode* child = parent.FirstChild(); child != nullptr; child = child->NextSibling())
        if (CanBeCreated(*child->RuntimeClass())) list.push_back(child);
    return list;
}

void WriteNode(SceneStream& stream, TreeNode& node) {
    QString name = node.RuntimeClass()->Name();
    static_cast<Stream&>(stream).Transfer(name);
    SceneStream own = stream.Section();
    node.Serialize(own);
    WriteList(stream, own.Data());
    const std::vector<TreeNode*> children = SavedChildren(node);
    auto count = static_cast<uint32_t>(children.size());
    stream.Transfer(count);
    for (TreeNode* child : children) WriteNode(stream, *child);
}

class NodeReader {
public:
    NodeReader(SceneStream& content, std::vector<std::string>& notesTaken)
        : stream(content), notes(notesTaken) {}

    /// \param parent  null to skip the node and its descendants.
    void ReadNode(TreeNode* parent, LevelMesh* level, uint32_t depth) {
        if (depth > deepest)
            SceneStream::Refuse(QStringLiteral("nodes are nested more than %1 deep").arg(deepest));
        QString name;
        static_cast<Stream&>(stream).Transfer(name);
        uint32_t bytes = 0;
        stream.Transfer(bytes);
        stream.Expect(bytes, 1);
        TreeNode* node = parent == nullptr ? nullptr : Link(*parent, level, name);
        if (node != nullptr) {
            std::optional<uint32_t> faces;
            if (name == QLatin1String(faceTableClass))
                faces = level == nullptr ? 0 : level->faceCount;
            FaceTableStream own(
                stream.Section(
                    stream.Next(), bytes, stream.Offset(), QStringLiteral("node ") + name),
                faces);
            node->Serialize(own);
            own.ExpectEnd();
        }
        stream.Skip(bytes);
        uint32_t children = 0;
        stream.Transfer(children);
        for (uint32_t i = 0; i < children; ++i) ReadNode(node, level, depth + 1);
    }

private:
    TreeNode* Link(TreeNode& parent, LevelMesh* level, const QString& name) {
        const ClassDesc* desc = ClassDesc::ByName(name);
        std::unique_ptr<Node> made(desc == nullptr ? nullptr : desc->Create());
        auto* node = dynamic_cast<TreeNode*>(made.get());
        if (node == nullptr) {
            notes.push_back("skipped a node of class " + name.toStdString() +
                            ", which no plug-in provides");
            return nullptr;
        }
        RefuseNewerClass(stream, *desc);
        const NoFaces whileLinked(level);
        parent.AddChild(node);
        // The parent owns it now.
        static_cast<void>(made.release());
        return node;
    }

    SceneStream& stream;
    std::vector<std::string>& notes;
};

}  // namespace

void RefuseNewerClass(const SceneStream& stream, const ClassDesc& desc) {
    if (stream.ClassVersion(&desc) <= desc.Version()) return;
    SceneStream::Refuse(
        QStringLiteral(
            "class %1 was written in version %2; this program supports versions up to %3")
            .arg(desc.Name())
            .arg(stream.ClassVersion(&desc))
            .arg(desc.Version()));
}

void WriteNodeChunk(SceneStream& stream, LevelGeometry& geometry) {
    geometry.Serialize(stream);
    std::vector<std::pair<uint32_t, TreeNode*>> nodes;
    for (TreeNode* child : SavedChildren(geometry)) nodes.emplace_back(geometryParent, child);
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level)
        for (TreeNode* child : SavedChildren(*geometry.Level(level)))
            nodes.emplace_back(level, child);
    auto count = static_cast<uint32_t>(nodes.size());
    stream.Transfer(count);
    for (auto& [parent, node] : nodes) {
        stream.Transfer(parent);
        WriteNode(stream, *node);
    }
}

void ReadNodeChunk(SceneStream& stream, LevelGeometry& geometry, std::vector<std::string>& notes) {
    geometry.Serialize(stream);
    uint32_t count = 0;
    stream.Transfer(count);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t parent = 0;
        stream.Transfer(parent);
        if (parent != geometryParent && parent >= geometry.LevelCount()) {
            SceneStream::Refuse(
                QStringLiteral("a node belongs to level %1, which does not exist").arg(parent));
        }
        NodeReader reader(stream, notes);
        if (parent == geometryParent)
            reader.ReadNode(&geometry, nullptr, 0);
        else
            reader.ReadNode(geometry.Level(parent), geometry.Level(parent), 0);
    }
}

}  // namespace trovik
