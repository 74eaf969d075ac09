// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

namespace trovik::test {

/// All tools as users know them, in the order of the catalogue.
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
