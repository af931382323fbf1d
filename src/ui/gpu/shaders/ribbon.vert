#version 440

layout(location = 0) in vec2 pos;      // data space
layout(location = 1) in vec2 dir;      // the whole segment in data space
layout(location = 2) in float beside;  // points to the left of the middle line, below 0 to the right
layout(location = 3) in vec4 color;
layout(location = 0) out vec4 vColor;

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;   // xScale, xOffset, yScale, yOffset
    vec4 view;  // width, height of the view
} u;

void main()
{
    vec2 p = vec2(pos.x * u.map.x + u.map.y, pos.y * u.map.z + u.map.w);
    vec2 d = vec2(dir.x * u.map.x * u.view.x * 0.5, dir.y * u.map.z * u.view.y * 0.5);
    float len = max(length(d), 1e-6);
    vec2 n = vec2(-d.y, d.x) / len;
    vec2 off = n * beside;
    p += off * 2.0 / u.view.xy;
    vColor = color;
    gl_Position = u.place * vec4(p, 0.0, 1.0);
}
