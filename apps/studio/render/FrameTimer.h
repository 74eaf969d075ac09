// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/Gl.h"

#include <array>
#include <optional>

namespace trovik::studio {

/// Measures the GPU time of frames without waiting for the GPU: a result is available a few frames
/// later. Requires the constructor's context.
class FrameTimer {
public:
    struct Result {
        double seconds;
        /// The tag passed to Begin.
        uint32_t tag;
    };

    FrameTimer() : gl(CurrentGl()) {
        for (Query& query : queries) gl.glGenQueries(1, &query.name);
    }
    ~FrameTimer() {
        for (const Query& query : queries) gl.glDeleteQueries(1, &query.name);
    }
    FrameTimer(const FrameTimer&) = delete;
    FrameTimer& operator=(const FrameTimer&) = delete;

    /// Encloses the commands to measure. Frames are skipped while all queries are pending.
    void Begin(uint32_t tag) {
        isMeasuring = !queries[next].waits;
        if (!isMeasuring) return;
        queries[next].tag = tag;
        gl.glBeginQuery(GL_TIME_ELAPSED, queries[next].name);
    }
    void End() {
        if (!isMeasuring) return;
        gl.glEndQuery(GL_TIME_ELAPSED);
        queries[next].waits = true;
        next = (next + 1) % queries.size();
    }
    /// The oldest result that has arrived and has not yet been returned.
    std::optional<Result> Take() {
        for (std::size_t i = 0; i < queries.size(); ++i) {
            Query& query = queries[(next + i) % queries.size()];
            if (!query.waits) continue;
            GLuint isAvailable = 0;
            gl.glGetQueryObjectuiv(query.name, GL_QUERY_RESULT_AVAILABLE, &isAvailable);
            if (isAvailable == 0) return std::nullopt;
            GLuint64 nanoseconds = 0;
            gl.glGetQueryObjectui64v(query.name, GL_QUERY_RESULT, &nanoseconds);
            query.waits = false;
            return Result{static_cast<double>(nanoseconds) * 1e-9, query.tag};
        }
        return std::nullopt;
    }

private:
    struct Query {
        GLuint name = 0;
        uint32_t tag = 0;
        bool waits = false;
    };

    Gl& gl;
    std::array<Query, 4> queries;
    std::size_t next = 0;
    bool isMeasuring = false;
};

}  // namespace trovik::studio
