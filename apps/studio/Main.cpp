// SPDX-License-Identifier: Apache-2.0
#include "viewport/Camera.h"

int main() { return 0; }
