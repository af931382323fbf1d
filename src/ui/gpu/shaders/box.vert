#version 440

layout(location = 0) in vec4 corners;  // data space: this corner and the opposite one
layout(location = 1) in float radius;  // points
layout(location = 2) in vec4 color;
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec2 vAt;     // device pixels from the view's top left
layout(location = 2) out vec4 vEdges;  // left, top, right, bottom, the same
layout(location = 3) out vec2 vShape;  // radius in device pixels; whether edges are smoothed

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
    vEdges = vec4(min(at.xy, at.zw), max(at.xy, at.zw));
    vShape = vec2(radius * u.device.x, radius > 0.0 ? 1.0 : u.device.y);
    vAt = at.xy + sign(at.xy - at.zw) * 0.5 * vShape.y;  // pixels that an edge covers in part
    vColor = color;
    gl_Position = u.place * vec4(vAt.x / size.x * 2.0 - 1.0, 1.0 - vAt.y / size.y * 2.0, 0.0, 1.0);
}
