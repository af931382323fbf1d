#version 440

layout(location = 0) in vec2 position;
layout(location = 1) in vec4 color;
layout(location = 0) out vec4 vColor;

layout(std140, binding = 0) uniform Block {
    mat4 place;  // the item's clip space onto the render target's
    vec4 map;    // xScale, xOffset, yScale, yOffset
    vec4 view;   // unused here
} u;

void main()
{
    vColor = color;
    gl_Position = u.place * vec4(position.x * u.map.x + u.map.y, position.y * u.map.z + u.map.w, 0.0, 1.0);
}
