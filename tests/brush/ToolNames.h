// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

namespace trovik::test {

/// The names of all tools as users see them, in the order of the catalogue.
inline constexpr std::array<const char*, 15> toolNames = {"Sculpt",
                                                          "Smear",
                                                          "Pinch",
                                                          "Smooth",
                                                          "Amplify",
                                                          "Flatten",
                                                          "Scrape",
                                                          "Fill",
                                                          "Wax",
                                                          "Bulge",
                                                          "Spray",
                                                          "Repeat",
                                                          "Knife",
                                                          "Foamy",
                                                          "Imprint"};

}  // namespace trovik::test
