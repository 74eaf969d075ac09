// SPDX-License-Identifier: Apache-2.0
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <dlfcn.h>

#if defined(__SANITIZE_ADDRESS__)
// NOLINTBEGIN(bugprone-reserved-identifier): the names are given by the sanitizers
extern "C" {

/// libxkbcommon calls strndup with text that is not terminated, which strict_string_checks reports.
const char* __asan_default_options() { return "intercept_strndup=0"; }

/// Suppresses reports of leaks in libraries that Qt uses.
const char* __lsan_default_suppressions() { return "leak:libdbus\nleak:libfontconfig\n"; }

/// Keeps libraries loaded, because LeakSanitizer reports memory to which only unloaded OpenGL
/// drivers refer.
int dlclose(void*) noexcept { return 0; }

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
#endif

int main(int argc, char** argv) {
    // Tests neither read nor change the user's own settings.
    QTemporaryDir home;
    for (const char* variable :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        qputenv(variable, home.path().toUtf8());
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
