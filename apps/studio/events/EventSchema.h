// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik::studio {

/// The JSON schema of event files, as docs/studio-events.schema.json has it.
const char* EventFileSchema();

}  // namespace trovik::studio
