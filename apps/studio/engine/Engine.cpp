// SPDX-License-Identifier: Apache-2.0
#include "engine/Engine.h"
