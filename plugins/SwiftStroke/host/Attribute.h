// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"
#include "host/Stream.h"

#include <QString>

#include <type_traits>

namespace trovik {

template <typename T>
class AttributeInstance;

/// A Boolean and a number that the panel shows in one row.
struct CheckableFloat {
    bool checked = false;
    float value = 0.0f;
    bool operator==(const CheckableFloat&) const = default;
};

/// A named, typed, connectable value of a node, shown in the property panel. Its owner is notified
/// of events. An attribute may have targets, which are attributes that receive its value whenever
/// it is set.
class TROVIK_API Attribute {
public:
    /// Adds the attribute to the owner's list.
    Attribute(Node* owner, const QString& name);
    Attribute(const Attribute&) = delete;
    Attribute& operator=(const Attribute&) = delete;

    /// Type number: 1 int, 2 float, 3 bool, 4 string, 5 checkable float.
    virtual int attributeType() const = 0;
    virtual void Serialize(Stream& stream) = 0;
    /// Returns the value as locale-independent text. Floats round-trip exactly.
    virtual QString AsString() const = 0;
    /// \return false, without changing the value, if the text is not a value of this type.
    virtual bool SetFromString(const QString& text) = 0;
    /// Connects `target`, which then follows this attribute. If the target had a different source,
    /// it is disconnected from that source.
    virtual void AddTarget(Attribute& target, bool silent);
    virtual void UpdateTargets();
    virtual int TargetType() const;
    /// These functions are for attributes that refer to a node. For other attributes, they have no
    /// effect and return null.
    virtual void SetPointerValue(Node* node, bool silent);
    virtual Node* PointerValue() const;
    virtual bool ValidatePointerValue(Node* node) const;
    /// Removes the attribute from its owner's list and ends all connections.
    virtual ~Attribute();
    /// Notifies the owner.
    virtual void StartEvent(NodeEventType type);
    /// \return null if there is no window system.
    virtual QWidget* CreateEditorWidget(QWidget* parent, int width);
    /// Additional parameters of an attribute, such as its range.
    virtual uint32_t ParameterCount() const;
    virtual QString ParameterName(uint32_t index) const;
    virtual QString ParameterValue(uint32_t index) const;
    virtual bool SetParameterValue(uint32_t index, const QString& value);

    void SetVisible(bool visible) { shown = visible; }
    bool IsVisible() const { return shown; }
    /// Whether the panel shows a separator line above the attribute.
    void SetSeparator(bool separator) { separated = separator; }
    bool HasSeparator() const { return separated; }
    /// \param collapsed  whether the category's group is initially collapsed.
    void SetCategory(const QString& category, bool collapsed);
    const QString& Category() const { return category; }
    bool CategoryCollapsed() const { return collapsed; }

    /// Connects this attribute to `source`, which it then follows.
    void Connect(Attribute& source, bool silent);
    /// Ends the connection to the source, if any.
    void Disconnect();
    Attribute* Source() const { return source; }
    /// Size of the value in bytes.
    uint32_t Size() const { return size; }
    Attribute* Target(uint32_t index) const;
    uint32_t TargetCount() const { return static_cast<uint32_t>(targets.size()); }

    const QString& Name() const { return name; }
    Node* Owner() const { return owner; }

protected:
    uint32_t size = 0;

private:
    Node* owner;
    QString name;
    QString category;
    std::vector<Attribute*> targets;
    Attribute* source = nullptr;
    bool shown = true;
    bool separated = false;
    bool collapsed = false;
};

/// Type number, text conversion and streaming of a value type. The host defines these functions for
/// the five types below.
template <typename T>
struct AttributeValue {};

// T is a type, so it cannot be parenthesised. NOLINTBEGIN(bugprone-macro-parentheses)
#define TROVIK_ATTRIBUTE_VALUE(T, number)                \
    template <>                                          \
    struct TROVIK_API AttributeValue<T> {                \
        static constexpr int type = number;              \
        static QString ToText(const T& value);           \
        static bool FromText(const QString& text, T& v); \
        static void Transfer(Stream& stream, T& value);  \
    }
// NOLINTEND(bugprone-macro-parentheses)
TROVIK_ATTRIBUTE_VALUE(int, 1);
TROVIK_ATTRIBUTE_VALUE(float, 2);
TROVIK_ATTRIBUTE_VALUE(bool, 3);
TROVIK_ATTRIBUTE_VALUE(QString, 4);
TROVIK_ATTRIBUTE_VALUE(CheckableFloat, 5);
#undef TROVIK_ATTRIBUTE_VALUE

/// Creates the panel widget of a bool attribute; returns null if there is no window system.
TROVIK_API QWidget* CreateNewBoolWidget(QWidget* parent,
                                        int width,
                                        AttributeInstance<bool>* attribute);

/// An attribute with a value of type T.
template <typename T>
class TROVIK_API AttributeInstance : public Attribute {
public:
    AttributeInstance(Node* holder, const QString& key, const T& initial = T())
        : Attribute(holder, key), value(initial) {
        size = static_cast<uint32_t>(sizeof(T));
    }

    int attributeType() const override { return AttributeValue<T>::type; }
    void Serialize(Stream& stream) override { AttributeValue<T>::Transfer(stream, value); }
    QString AsString() const override { return AttributeValue<T>::ToText(value); }
    bool SetFromString(const QString& text) override {
        T parsed = value;
        if (!AttributeValue<T>::FromText(text, parsed)) return false;
        SetValue(parsed, false);
        return true;
    }

    /// Connects the target, sets it to this value, and sends the connection events on both ends.
    void AddTarget(Attribute& target, bool silent) override {
        Attribute::AddTarget(target, false);
        if (AttributeInstance* same = SameType(target); same != nullptr && same->value != value)
            same->SetValue(value, silent);
        StartEvent(NodeEventSourceConnected);
        target.StartEvent(NodeEventTargetConnected);
    }
    /// A target of a different type cannot receive the value, but its owner is still notified of a
    /// change.
    void UpdateTargets() override {
        for (uint32_t i = 0; i < TargetCount(); ++i) {
            if (AttributeInstance* same = SameType(*Target(i)))
                same->SetValue(value, false);
            else
                Target(i)->StartEvent(NodeEventValueChanged);
        }
    }
    QWidget* CreateEditorWidget(QWidget* parent, int width) override {
        if constexpr (std::is_same_v<T, bool>)
            return CreateNewBoolWidget(parent, width, this);
        else
            return Attribute::CreateEditorWidget(parent, width);
    }

    /// Stores the value, updates the targets and, unless `silent` is set, notifies the owner.
    virtual void SetValue(const T& newValue, bool silent = false) {
        value = newValue;
        UpdateTargets();
        if (!silent) StartEvent(NodeEventValueChanged);
    }

    const T& Value() const { return value; }
    operator const T&() const { return value; }
    /// Both assignment operators set the value without notifying the owner.
    const T& operator=(const AttributeInstance& other) {
        SetValue(other.value, true);
        return value;
    }
    const T& operator=(const T& newValue) {
        SetValue(newValue, true);
        return value;
    }

protected:
    T value;

private:
    AttributeInstance* SameType(Attribute& other) const {
        if (other.Size() != Size() || other.attributeType() != attributeType()) return nullptr;
        return static_cast<AttributeInstance*>(&other);
    }
};

/// A float within a range: values outside the range are clamped, and NaN becomes the minimum.
class TROVIK_API AttributeFloatRange : public AttributeInstance<float> {
public:
    /// \param decimals  number of decimal places in the panel.
    AttributeFloatRange(
        Node* owner, const QString& name, float minimum, float maximum, float value, int decimals);

    using AttributeInstance<float>::SetValue;
    void SetValue(const float& newValue, bool silent = false) override;
    uint32_t ParameterCount() const override;
    QString ParameterName(uint32_t index) const override;
    QString ParameterValue(uint32_t index) const override;

    const AttributeFloatRange& operator=(const AttributeFloatRange& other);
    float Minimum() const { return minimum; }
    float Maximum() const { return maximum; }
    int Decimals() const { return decimals; }

private:
    float minimum;
    float maximum;
    int decimals;
};

/// Reads or writes the value, depending on the direction of the stream.
TROVIK_API Stream& operator<<(Stream& stream, AttributeFloatRange& attribute);

}  // namespace trovik
