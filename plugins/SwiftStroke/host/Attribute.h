// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"
#include "host/Stream.h"

#include <QString>

#include <type_traits>

namespace trovik {

template <typename T>
class AttributeInstance;

/// A switch with a number beside it, as the panel shows them in one row.
struct CheckableFloat {
    bool checked = false;
    float value = 0.0f;
    bool operator==(const CheckableFloat&) const = default;
};

/// A named, typed, connectable value of a node, shown in the property panel. Its owner is told of
/// its events. An attribute may drive others, its targets: they take its value whenever it is set.
class TROVIK_API Attribute {
public:
    /// Enters the owner's list of attributes.
    Attribute(Node* owner, const QString& name);
    Attribute(const Attribute&) = delete;
    Attribute& operator=(const Attribute&) = delete;

    /// Number of the value's type: 1 int, 2 float, 3 bool, 4 text, 5 switch with number.
    virtual int attributeType() const = 0;
    virtual void Serialize(Stream& stream) = 0;
    /// The value as text, independent of the locale; floats come back as the same float.
    virtual QString AsString() const = 0;
    /// \return false, changing nothing, when the text is no value of this type.
    virtual bool SetFromString(const QString& text) = 0;
    /// Makes `target` follow this attribute. A target that had another source leaves it.
    virtual void AddTarget(Attribute& target, bool silent);
    virtual void UpdateTargets();
    virtual int TargetType() const;
    /// For attributes that refer to a node; others ignore it and answer null.
    virtual void SetPointerValue(Node* node, bool silent);
    virtual Node* PointerValue() const;
    virtual bool ValidatePointerValue(Node* node) const;
    /// Leaves the owner's list and every connection.
    virtual ~Attribute();
    /// Tells the owner.
    virtual void StartEvent(NodeEventType type);
    /// \return null where no window system is present.
    virtual QWidget* CreateEditorWidget(QWidget* parent, int width);
    /// Further numbers of an attribute, such as its range.
    virtual uint32_t ParameterCount() const;
    virtual QString ParameterName(uint32_t index) const;
    virtual QString ParameterValue(uint32_t index) const;
    virtual bool SetParameterValue(uint32_t index, const QString& value);

    void SetVisible(bool visible) { shown = visible; }
    bool IsVisible() const { return shown; }
    /// A line above the attribute in the panel.
    void SetSeparator(bool separator) { separated = separator; }
    bool HasSeparator() const { return separated; }
    /// \param collapsed  whether the category's group starts closed.
    void SetCategory(const QString& category, bool collapsed);
    const QString& Category() const { return category; }
    bool CategoryCollapsed() const { return collapsed; }

    /// Makes this attribute follow `source`.
    void Connect(Attribute& source, bool silent);
    /// Ends the connection to the source, if any.
    void Disconnect();
    Attribute* Source() const { return source; }
    /// Bytes of the value.
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

/// How a type of value is numbered, written as text and streamed. Defined by the host for the five
/// types below.
template <typename T>
struct AttributeValue {};

// T is a type, which cannot stand in parentheses. NOLINTBEGIN(bugprone-macro-parentheses)
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

/// Panel widget of a bool attribute; null where no window system is present.
TROVIK_API QWidget* CreateNewBoolWidget(QWidget* parent,
                                        int width,
                                        AttributeInstance<bool>* attribute);

/// An attribute that holds a value of type T.
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

    /// Connects, brings the target to this value, and raises the connection events on both ends.
    void AddTarget(Attribute& target, bool silent) override {
        Attribute::AddTarget(target, false);
        if (AttributeInstance* same = SameType(target); same != nullptr && same->value != value)
            same->SetValue(value, silent);
        StartEvent(NodeEventSourceConnected);
        target.StartEvent(NodeEventTargetConnected);
    }
    /// A target of another type cannot take the value; it only hears that something changed.
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

    /// Stores the value, brings the targets along, and tells the owner unless `silent`.
    virtual void SetValue(const T& newValue, bool silent = false) {
        value = newValue;
        UpdateTargets();
        if (!silent) StartEvent(NodeEventValueChanged);
    }

    const T& Value() const { return value; }
    operator const T&() const { return value; }
    /// Both assignments take the value in silence.
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

/// A float that keeps to a range: values beyond it become the limit, NaN becomes the lower one.
class TROVIK_API AttributeFloatRange : public AttributeInstance<float> {
public:
    /// \param decimals  shown in the panel.
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

/// Streams the value, in the direction of the stream.
TROVIK_API Stream& operator<<(Stream& stream, AttributeFloatRange& attribute);

}  // namespace trovik
