// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <QString>

namespace trovik {

/// Registers a loadable library with the host. Each library defines one static object of this
/// class. The constructor adds it to the host's list, and the host calls `initialise` after loading
/// the library.
class TROVIK_API Plugin {
public:
    Plugin(const QString& name,
           const QString& description,
           const QString& author,
           const QString& address,
           const QString& date,
           void (*initialise)());
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    const QString& Name() const { return name; }
    const QString& Description() const { return description; }
    const QString& Author() const { return author; }
    const QString& Address() const { return address; }
    const QString& Date() const { return date; }
    /// Runs `initialise` once; further calls have no effect.
    void Initialise();
    bool IsInitialised() const { return initialised; }

    static unsigned Count();
    static Plugin* At(unsigned index);

private:
    QString name, description, author, address, date;
    void (*initialise)();
    bool initialised = false;
};

}  // namespace trovik
