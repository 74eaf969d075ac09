// SPDX-License-Identifier: Apache-2.0

/// \file Replacements for the host's registering constructors, under the same symbol names. Symbol
/// resolution finds the program's functions before those of the host library, so a loaded module
/// calls the replacements. They record the arguments and forward to the original functions. They
/// are necessary because the host's registries store neither the labels nor the order of
/// registrations across registries.
#include "tests/stroke/RegistrationSpy.h"

#include "host/ClassDesc.h"
#include "host/Plugin.h"
#include "host/Preferences.h"

#include <cstdlib>
#include <dlfcn.h>

namespace trovik::test {

std::vector<Registered>& RegistrationLog() {
    static auto* log = new std::vector<Registered>;
    return *log;
}

namespace {

template <typename Function>
Function* Real(const char* symbol) {
    void* found = dlsym(RTLD_NEXT, symbol);
    if (found == nullptr) std::abort();
    return reinterpret_cast<Function*>(found);
}

}  // namespace

#define CLASS_DESC "_ZN6trovik9ClassDescC1EPKS0_S2_RK7QStringS5_PFPNS_4NodeEjEii"
#define PLUGIN "_ZN6trovik6PluginC1ERK7QStringS3_S3_S3_S3_PFvvE"
#define BOOL "_ZN6trovik11Preferences4BoolC1ERK7QStringS4_S4_S4_bb"
#define FLOAT "_ZN6trovik11Preferences5FloatC1ERK7QStringS4_S4_S4_fffb"

using Factory = Node* (*)(unsigned);
void SpyClassDesc(void*,
                  const ClassDesc*,
                  const ClassDesc*,
                  const QString&,
                  const QString&,
                  Factory,
                  int,
                  int) __asm__(CLASS_DESC) __attribute__((visibility("default")));
void SpyPlugin(void*,
               const QString&,
               const QString&,
               const QString&,
               const QString&,
               const QString&,
               void (*)()) __asm__(PLUGIN) __attribute__((visibility("default")));
void SpyBool(
    void*, const QString&, const QString&, const QString&, const QString&, bool, bool) __asm__(BOOL)
    __attribute__((visibility("default")));
void SpyFloat(void*,
              const QString&,
              const QString&,
              const QString&,
              const QString&,
              float,
              float,
              float,
              bool) __asm__(FLOAT) __attribute__((visibility("default")));

void SpyClassDesc(void* self,
                  const ClassDesc* parent,
                  const ClassDesc* displayParent,
                  const QString& name,
                  const QString& displayName,
                  Factory factory,
                  int flags,
                  int version) {
    Registered entry;
    entry.kind = "ClassDesc";
    entry.name = name.toStdString();
    RegistrationLog().push_back(entry);
    Real<decltype(SpyClassDesc)>(CLASS_DESC)(
        self, parent, displayParent, name, displayName, factory, flags, version);
}

void SpyPlugin(void* self,
               const QString& name,
               const QString& description,
               const QString& author,
               const QString& address,
               const QString& date,
               void (*initialise)()) {
    Registered entry;
    entry.kind = "Plugin";
    entry.name = name.toStdString();
    RegistrationLog().push_back(entry);
    Real<decltype(SpyPlugin)>(PLUGIN)(self, name, description, author, address, date, initialise);
}

void SpyBool(void* self,
             const QString& key,
             const QString& category,
             const QString& label,
             const QString& categoryLabel,
             bool value,
             bool last) {
    RegistrationLog().push_back({"Bool",
                                 key.toStdString(),
                                 category.toStdString(),
                                 label.toStdString(),
                                 categoryLabel.toStdString(),
                                 value ? 1.0f : 0.0f,
                                 0.0f,
                                 0.0f,
                                 last});
    Real<decltype(SpyBool)>(BOOL)(self, key, category, label, categoryLabel, value, last);
}

void SpyFloat(void* self,
              const QString& key,
              const QString& category,
              const QString& label,
              const QString& categoryLabel,
              float value,
              float minimum,
              float maximum,
              bool last) {
    RegistrationLog().push_back({"Float",
                                 key.toStdString(),
                                 category.toStdString(),
                                 label.toStdString(),
                                 categoryLabel.toStdString(),
                                 value,
                                 minimum,
                                 maximum,
                                 last});
    Real<decltype(SpyFloat)>(FLOAT)(
        self, key, category, label, categoryLabel, value, minimum, maximum, last);
}

}  // namespace trovik::test
