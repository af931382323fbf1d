#version 440

layout(location = 0) in vec2 center;  // data space
layout(location = 1) in vec2 size;    // radius in points, alpha
layout(location = 2) in vec4 color;   // red, green, blue, the corner
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec3 vAt;  // device pixels from the centre, y upwards; the radius and half a pixel more

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view, fade, radius scale
    vec4 device;  // pixels a point
} u;

void main()
{
    float corner = color.a * 255.0;
    vec2 side = vec2(corner > 1.5 ? 1.0 : -1.0, corner < 0.5 || corner > 2.5 ? 1.0 : -1.0);
    float r = size.x * u.view.w * u.device.x + 0.5;  // with the pixels that the rim covers in part
    vAt = vec3(side * r, r);
    vColor = vec4(color.rgb, size.y * u.view.z);
    vec2 p = vec2(center.x * u.map.x + u.map.y, center.y * u.map.z + u.map.w);
    gl_Position = u.place * vec4(p + vAt.xy * 2.0 / (u.view.xy * u.device.x), 0.0, 1.0);
}
