// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLayout>
#include <QList>

namespace trovik::studio {

/// Arranges items of equal size in rows, with as many items per row as fit.
class FlowLayout : public QLayout {
public:
    explicit FlowLayout(QWidget* parent, int gap = 2) : QLayout(parent), between(gap) {}
    ~FlowLayout() override { qDeleteAll(items); }

    void addItem(QLayoutItem* item) override { items.append(item); }
    int count() const override { return static_cast<int>(items.size()); }
    QLayoutItem* itemAt(int index) const override { return items.value(index); }
    QLayoutItem* takeAt(int index) override {
        return index >= 0 && index < items.size() ? items.takeAt(index) : nullptr;
    }
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return Place(QRect(0, 0, width, 0), false); }
    QSize sizeHint() const override { return minimumSize(); }
    QSize minimumSize() const override;
    void setGeometry(const QRect& area) override {
        QLayout::setGeometry(area);
        Place(area, true);
    }

private:
    /// \return the required height.
    int Place(const QRect& area, bool moves) const;

    QList<QLayoutItem*> items;
    int between;
};

}  // namespace trovik::studio
