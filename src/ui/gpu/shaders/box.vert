#version 440

layout(location = 0) in vec4 corners;  // data space: this corner and the opposite one
layout(location = 1) in vec4 color;
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec2 vAt;     // device pixels from the middle
layout(location = 2) out vec2 vReach;  // from the middle to half a pixel beyond the sides

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view
    vec4 device;  // pixels a point; 1 where edges are to be smoothed, 0 where samples do it
} u;

void main()
{
    vec2 size = u.view.xy * u.device.x;
    vec4 clip = corners * u.map.xzxz + u.map.ywyw;
    vec4 at = (clip * vec4(0.5, -0.5, 0.5, -0.5) + 0.5) * size.xyxy;
    vec2 outwards = (at.xy - at.zw) * 0.5;
    vReach = u.device.y > 0.0 ? abs(outwards) + 0.5 : vec2(1e6);
    vAt = outwards + sign(outwards) * 0.5 * u.device.y;  // pixels that an edge covers in part
    vColor = color;
    vec2 corner = (at.xy + at.zw) * 0.5 + vAt;
    gl_Position = u.place * vec4(corner.x / size.x * 2.0 - 1.0, 1.0 - corner.y / size.y * 2.0, 0.0, 1.0);
}
