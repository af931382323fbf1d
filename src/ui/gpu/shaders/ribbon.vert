#version 440

layout(location = 0) in vec4 segment;  // data space: an end of the middle line, and the whole segment
layout(location = 1) in vec2 joined;   // the segment that it joins at this end; 0 where it ends
layout(location = 2) in float beside;  // points to the left of the middle line, below 0 to the right; 256 more at the end
layout(location = 3) in vec4 color;
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec3 vAt;     // pixels across from the middle line; from either end and half a pixel more
layout(location = 2) out vec2 vShape;  // pixels across to half a pixel beyond the sides, and how far rows lean
layout(location = 3) out vec4 vDash;   // how many dashes with their gaps there are to here, and in a pixel; their share;
                                       // how many in the segment

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view; of dashed lines: bars from one dash to the next, 0 for no gaps, their share
    vec4 device;  // pixels a point; 1 where edges are to be smoothed, 0 where samples do it
} u;

const float segmentEnd = 256.0;
const float roomToJoin = 0.75;  // pixels beyond the sides

vec2 leftOf(vec2 way)
{
    return vec2(-way.y, way.x) / max(length(way), 1e-6);
}

void main()
{
    vec2 size = u.view.xy * u.device.x;
    vec2 toPixels = u.map.xz * size * 0.5;
    float atEnd = step(segmentEnd, abs(beside));
    float halfWidth = (abs(beside) - segmentEnd * atEnd) * u.device.x;
    vec2 way = segment.zw * toPixels, other = joined * toPixels;
    float len = length(way);
    vec2 n = leftOf(way), m = n + leftOf(other);
    vec2 ahead = vec2(n.y, -n.x);
    float steep = max(abs(n.x), abs(n.y)), lean = min(abs(n.x), abs(n.y));
    float beyond = 0.5 * (steep + lean) * u.device.y;  // as far as pixels reach that an edge covers in part
    vec2 off = n * (halfWidth + beyond);
    // The edges of both segments meet on the line that halves the turn. After a sharp turn both end square and overlap
    // instead, and so they do where one is too short; then only ends after much of a turn are smooth, since two that lie
    // in one line would let the ground through. The corners within a turn may pass each other by a little: the segments
    // beside cover that.
    float turn = dot(m, m), shortest = min(len, length(other));
    float needed = (halfWidth + roomToJoin) * sqrt(max(4.0 / max(turn, 1e-6) - 1.0, 0.0));
    bool meet = turn > 1.0 && needed < shortest * 0.8;
    if (meet) off = m * (2.0 / turn) * (halfWidth + roomToJoin * u.device.y);  // the same corners for both, so no cracks
    off *= sign(beside);
    bool ends = shortest == 0.0 || (!meet && turn < 3.0);
    if (ends) off += ahead * (atEnd * 2.0 - 1.0) * beyond;
    float along = dot(off, ahead);
    float fromOther = max(len + along * (atEnd * 2.0 - 1.0), 0.5);
    float fromOwn = ends ? -beyond : len + 1.0;
    vAt = vec3(dot(off, n) / steep, mix(vec2(fromOwn, fromOther), vec2(fromOther, fromOwn), atEnd) + 0.5);
    vShape = vec2(halfWidth / steep + 0.5, lean / steep * 0.25);
    if (u.device.y == 0.0) {
        vAt = vec3(0.0, 1.0, 1.0);
        vShape = vec2(1.0, 0.0);
    }
    // Without gaps so many dashes share a pixel that their share is all that shows.
    float perPixel = u.view.z > 0.0 ? segment.z / max(u.view.z * len, 1e-6) : 256.0;
    float dashes = u.view.z > 0.0 ? len * perPixel : 1e9;
    vDash = vec4((atEnd * len + along) * perPixel, perPixel, u.view.w, max(dashes, 1e-6));
    vColor = color;
    vec2 p = vec2(segment.x * u.map.x + u.map.y, segment.y * u.map.z + u.map.w);
    gl_Position = u.place * vec4(p + off * 2.0 / size, 0.0, 1.0);
}
