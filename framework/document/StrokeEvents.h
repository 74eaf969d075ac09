// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"

namespace trovik {

/// Passes the inputs of a document's strokes to its journal and its listener, in this order.
class Document::StrokeEvents final : public StrokeInputListener {
public:
    explicit StrokeEvents(Document& ofDocument) : document(ofDocument) {}

    void OnStrokeBegun(BrushOperation::Modifier modifier, uint64_t seed) override {
        document.isStateCurrent = false;
        Pass([&](StrokeInputListener& one) { one.OnStrokeBegun(modifier, seed); });
    }
    void OnDab(const StrokeDab& dab, bool failed) override {
        Pass([&](StrokeInputListener& one) { one.OnDab(dab, failed); });
    }
    void OnWholeMesh(float strength, bool byFacing) override {
        Pass([&](StrokeInputListener& one) { one.OnWholeMesh(strength, byFacing); });
    }
    void OnReverted() override {
        Pass([](StrokeInputListener& one) { one.OnReverted(); });
    }
    void OnStrokeEnded(bool brokenOff) override {
        Pass([&](StrokeInputListener& one) { one.OnStrokeEnded(brokenOff); });
        document.NotifyChanges();
    }

private:
    template <typename Event>
    void Pass(const Event& event) {
        if (document.journal != nullptr) event(*document.journal);
        if (document.inputListener != nullptr) event(*document.inputListener);
    }

    Document& document;
};

}  // namespace trovik
