#version 440

layout(location = 0) in vec4 center;  // data space
layout(location = 1) in vec4 off;     // unit offset, radius in pixels
layout(location = 2) in vec4 color;
layout(location = 0) out vec4 vColor;

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;   // xScale, xOffset, yScale, yOffset
    vec4 view;  // width, height of the view, fade, radius scale
} u;

void main()
{
    vec2 p = vec2(center.x * u.map.x + u.map.y, center.y * u.map.z + u.map.w);
    float r = off.z * u.view.w;
    p += off.xy * r * 2.0 / u.view.xy;
    vColor = vec4(color.rgb, color.a * u.view.z);
    gl_Position = u.place * vec4(p, 0.0, 1.0);
}
