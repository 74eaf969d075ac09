// SPDX-License-Identifier: Apache-2.0
#include "framework/files/UsdSubsets.h"

#include "framework/files/FaceParts.h"
#include "framework/files/UsdText.h"

#include <optional>

namespace trovik {

namespace {

constexpr const char* MaterialScope = "Materials";

/// Returns a prim's metadata, enclosed in parentheses, or an empty string if it has none.
std::string Metadata(const std::string& name, const std::string& prim, bool isBound) {
    std::string lines;
    if (isBound) {
        lines += "        prepend apiSchemas = [\"MaterialBindingAPI\"]\n";
    }
    if (name != prim) {
        lines += "        displayName = " + UsdQuoted(name) + "\n";
    }
    return lines.empty() ? lines : " (\n" + lines + "    )";
}

/// Writes the subsets of one family, one after the other.
class SubsetFamily {
public:
    SubsetFamily(OutputFile& target,
                 const FaceParts& faceParts,
                 std::string familyName,
                 std::string materialPath)
        : file(target),
          parts(faceParts),
          family(std::move(familyName)),
          materials(std::move(materialPath)) {}

    /// \param names  names of the parts; empty for a part without a subset.
    /// \param prims  prim names of the parts and of their materials.
    void Write(const std::vector<std::string>& names, const std::vector<std::string>& prims) {
        file.Write("    uniform token subsetFamily:" + family +
                   ":familyType = \"nonOverlapping\"\n");
        parts.ForEachWord(
            [](const FaceParts::Part& part) { return part.faces; },
            0,
            [](const FaceBlock&, const FaceParts::Face& face, std::vector<std::uint32_t>& words) {
                words.push_back(static_cast<std::uint32_t>(face.number));
            },
            [&](std::size_t part, const std::vector<std::uint32_t>& faces) {
                if (prims[part].empty() || faces.empty()) {
                    return;
                }
                if (open != part) {
                    Close(prims);
                    Open(part, names[part], prims[part]);
                }
                for (const std::uint32_t face : faces) {
                    indices->Whole(face);
                }
            });
        Close(prims);
    }

private:
    void Open(std::size_t part, const std::string& name, const std::string& prim) {
        open = part;
        file.Write("\n    def GeomSubset \"" + prim + "\"" +
                   Metadata(name, prim, !materials.empty()) +
                   "\n    {\n        uniform token elementType = \"face\"\n"
                   "        uniform token familyName = \"" +
                   family + "\"\n    ");
        indices.emplace(file, "int[] indices");
    }

    void Close(const std::vector<std::string>& prims) {
        if (!open) {
            return;
        }
        indices->End();
        indices.reset();
        if (!materials.empty()) {
            file.Write("        rel material:binding = <" + materials + "/" + prims[*open] + ">\n");
        }
        file.Write("    }\n");
        open.reset();
    }

    OutputFile& file;
    const FaceParts& parts;
    std::string family;
    std::string materials;
    std::optional<std::size_t> open;
    std::optional<UsdList> indices;
};

}  // namespace

void WriteUsdSubsets(OutputFile& file,
                     const MeshSource& source,
                     const std::string& prim,
                     JobControl* job) {
    UsdNames unique;
    unique.Unique(MaterialScope);
    const auto write = [&](unsigned key,
                           const std::vector<std::string>& ofSource,
                           const char* family,
                           const std::string& materialPath) {
        const FaceParts parts(source, key, job);
        std::vector<std::string> names;
        std::vector<std::string> prims;
        for (const FaceParts::Part& part : parts.Parts()) {
            const std::uint32_t number = key == FaceParts::ByGroup ? part.group : part.material;
            const bool isNamed = number != SurfaceAttributes::none;
            names.push_back(isNamed ? ofSource[number] : std::string());
            prims.push_back(isNamed ? unique.Unique(ofSource[number]) : std::string());
        }
        SubsetFamily(file, parts, family, materialPath).Write(names, prims);
        if (materialPath.empty()) {
            return;
        }
        file.Write("\n    def Scope \"" + std::string(MaterialScope) + "\"\n    {\n");
        for (std::size_t part = 0; part < prims.size(); ++part) {
            if (!prims[part].empty()) {
                file.Write("    def Material \"" + prims[part] + "\"" +
                           Metadata(names[part], prims[part], false) + "\n    {\n    }\n");
            }
        }
        file.Write("    }\n");
    };
    if (!source.GroupNames().empty()) {
        write(FaceParts::ByGroup, source.GroupNames(), "group", "");
    }
    if (!source.MaterialNames().empty()) {
        write(FaceParts::ByMaterial,
              source.MaterialNames(),
              "materialBind",
              "/" + prim + "/" + MaterialScope);
    }
}

}  // namespace trovik
