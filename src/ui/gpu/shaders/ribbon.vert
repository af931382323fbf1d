#version 440

layout(location = 0) in vec4 segment;  // data space: an end of the middle line, and the whole segment
layout(location = 1) in vec2 joined;   // the segment that it joins at this end; 0 where it ends
layout(location = 2) in float beside;  // points to the left of the middle line, below 0 to the right
layout(location = 3) in vec4 color;
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec3 vAcross;  // device pixels from the middle line, half the width, whether edges are smoothed

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view
    vec4 device;  // pixels a point; 1 where edges are to be smoothed, 0 where samples do it
} u;

vec2 leftOf(vec2 way)
{
    return vec2(-way.y, way.x) / max(length(way), 1e-6);
}

void main()
{
    vec2 size = u.view.xy * u.device.x;
    vec2 toPixels = u.map.xz * size * 0.5;
    float halfWidth = abs(beside) * u.device.x;
    float reach = halfWidth + 0.5 * u.device.y;  // with the pixels that an edge covers in part
    vec2 n = leftOf(segment.zw * toPixels);
    vec2 off = n * reach;
    vec2 other = joined * toPixels;
    float shortest = min(length(other), length(segment.zw * toPixels));
    vec2 m = n + leftOf(other);
    // The edges of both segments meet on the line that halves the turn. After a sharp turn, and where a segment is
    // shorter than the ribbon is wide, both end square and overlap instead.
    if (shortest > reach && dot(m, m) > 1.0) off = m * (2.0 / dot(m, m)) * reach;
    off *= sign(beside);
    vAcross = vec3(dot(off, n), halfWidth, u.device.y);
    vColor = color;
    vec2 p = vec2(segment.x * u.map.x + u.map.y, segment.y * u.map.z + u.map.w);
    gl_Position = u.place * vec4(p + off * 2.0 / size, 0.0, 1.0);
}
