// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/FreezeBrushChunk.h"

#include "framework/scene/SceneChunks.h"

#include <cmath>

namespace trovik {

void WriteFreezeBrushChunk(SceneStream& stream, BrushOperation& brush, bool isFreezeBrushActive) {
    uint8_t atWork = isFreezeBrushActive ? 1 : 0;
    stream.Transfer(atWork);
    SceneStream own = stream.Section();
    brush.Serialize(own);
    WriteList(stream, own.Data());
    stream.Transfer(brush.facingAngleStart);
    stream.Transfer(brush.facingAngleRange);
}

bool ReadFreezeBrushChunk(SceneStream& stream, BrushOperation* brush) {
    uint8_t atWork = 0;
    stream.Transfer(atWork);
    uint32_t bytes = 0;
    stream.Transfer(bytes);
    stream.Expect(bytes, 1);
    if (brush != nullptr) {
        SceneStream own =
            stream.Section(stream.Next(), bytes, stream.Offset(), QStringLiteral("freeze brush"));
        brush->Serialize(own);
        own.ExpectEnd();
        if (brush->FalloffData().fill == 0)
            SceneStream::Refuse(QStringLiteral("a falloff curve has no samples"));
    }
    stream.Skip(bytes);
    float start = 0.0f;
    float range = 0.0f;
    stream.Transfer(start);
    stream.Transfer(range);
    if (!std::isfinite(start) || !std::isfinite(range))
        SceneStream::Refuse(QStringLiteral("an angle of the facing falloff is not finite"));
    if (brush != nullptr) {
        brush->facingAngleStart = start;
        brush->facingAngleRange = range;
    }
    return atWork != 0;
}

}  // namespace trovik
