// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <QString>

namespace trovik {

/// The record by which a loadable library makes itself known. Constructing one, as a static object
/// of the library, enters it in the host's list; the host calls `initialise` after loading.
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
    /// Runs `initialise`, once; further calls do nothing.
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
