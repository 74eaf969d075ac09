// SPDX-License-Identifier: Apache-2.0
#include "input/ValueGesture.h"

#include "engine/Engine.h"
#include "input/BrushCursor.h"

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

/// If the pointer is not over the surface, a drag of this many pixels doubles the radius.
constexpr double pixelsPerDoubling = 120.0;
constexpr double percentPerPixel = 0.25;
constexpr double minPixels = 1.0;
constexpr double maxPixels = 4096.0;

double NumberOf(const ToolSetting* setting) {
    return setting != nullptr && setting->value.is_number() ? setting->value.get<double>() : 0.0;
}

}  // namespace

ValueGesture::ValueGesture(Engine& ofEngine,
                           BrushCursor& brushCursor,
                           Value changed,
                           const QPointF& position,
                           double ratio)
    : engine(ofEngine), cursor(brushCursor), value(changed), start(position), pixelRatio(ratio) {
    if (value == Value::Strength) {
        before = NumberOf(engine.Setting("strength"));
    } else {
        const double pixels = NumberOf(engine.Setting("radiusPixels"));
        isInPixels = pixels > 0.0;
        before = isInPixels ? pixels : NumberOf(engine.Setting("radius"));
        pixelsBefore = cursor.RadiusInPixels();
    }
    current = before;
    Show();
}

double ValueGesture::Chosen() const {
    bool isNumber = false;
    const double number = typed.toDouble(&isNumber);
    if (!isNumber) return current;
    if (value == Value::Strength) return std::clamp(number, 0.0, 100.0);
    return isInPixels ? std::clamp(number, minPixels, maxPixels) : std::max(number, 0.0);
}

void ValueGesture::Move(const PointerEvent& event) {
    const double way = (event.position.x() - start.x()) / pixelRatio;
    if (way == 0.0 && !hasChanged) return;
    hasChanged = true;
    typed.clear();
    if (value == Value::Strength) {
        current = std::clamp(before + way * percentPerPixel, 0.0, 100.0);
    } else if (isInPixels) {
        current = std::clamp(before + way * pixelRatio, minPixels, maxPixels);
    } else if (pixelsBefore > 0.0) {
        current = before * std::max(pixelsBefore + way * pixelRatio, minPixels) / pixelsBefore;
    } else {
        current = before * std::exp2(way / pixelsPerDoubling);
    }
    Show();
}

bool ValueGesture::Type(int key, const QString& text) {
    if (key == Qt::Key_Backspace) {
        typed.chop(1);
    } else if (text.size() == 1 && (text[0].isDigit() || text[0] == QLatin1Char('.'))) {
        typed += text;
    } else {
        return false;
    }
    hasChanged = true;
    Show();
    return true;
}

void ValueGesture::Show() {
    if (value == Value::Strength || before <= 0.0 || pixelsBefore <= 0.0) return;
    cursor.SetPreviewRadius(pixelsBefore * Chosen() / before);
}

void ValueGesture::Finish() {
    cursor.SetPreviewRadius(0.0);
    if (!hasChanged) return;
    const char* name = value == Value::Strength ? "strength"
                       : isInPixels             ? "radiusPixels"
                                                : "radius";
    if (Chosen() > 0.0 || value == Value::Strength) engine.Run({{"set", {{name, Chosen()}}}});
}

void ValueGesture::Cancel() { cursor.SetPreviewRadius(0.0); }

QStringList ValueGesture::Hud() const {
    const QString number = typed.isEmpty() ? QString::number(Chosen(), 'g', 4) : typed + u'_';
    if (value == Value::Strength) return {tr("Strength %1%").arg(number)};
    return {isInPixels ? tr("Radius %1 px").arg(number) : tr("Radius %1").arg(number)};
}

}  // namespace trovik::studio
