// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"

namespace trovik {

/// A setting that is stored per user and not per scene. The constructor registers it with the host,
/// which owns the attribute and stores its value. Settings with the same key share one attribute.
namespace Preferences {

class TROVIK_API Bool {
public:
    /// \param advanced  whether the setting is shown only in the advanced panel.
    Bool(const QString& key,
         const QString& category,
         const QString& label,
         const QString& categoryLabel,
         bool value,
         bool advanced);
    operator bool() const { return attribute->Value(); }

    AttributeInstance<bool>* attribute;
};

class TROVIK_API Float {
public:
    Float(const QString& key,
          const QString& category,
          const QString& label,
          const QString& categoryLabel,
          float value,
          float minimum,
          float maximum,
          bool advanced);
    operator float() const { return attribute->Value(); }

    AttributeFloatRange* attribute;
};

}  // namespace Preferences

}  // namespace trovik
