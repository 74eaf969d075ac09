// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik::studio {

/// The JSON schema of event files, identical to docs/studio-events.schema.json.
const char* EventFileSchema();

}  // namespace trovik::studio
