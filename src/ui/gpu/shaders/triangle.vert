#version 440

layout(location = 0) in vec2 center;  // data space
layout(location = 1) in vec2 size;    // radius in points, alpha
layout(location = 2) in vec4 color;   // red, green, blue, the corner: tip, left and right of the base; 4 more: tip down
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec3 vAt;  // device pixels to the right of the middle, below the tip, and above the base and half
                                    // a pixel more

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view, fade, radius scale
    vec4 device;  // pixels a point; 1 where a pixel has one sample, 0 where it has several
} u;

void main()
{
    float code = color.a * 255.0, up = code < 3.5 ? 1.0 : -1.0;
    float corner = code - (code < 3.5 ? 0.0 : 4.0);
    float r = size.x * u.view.w * u.device.x;
    // So far out that a pixel that an edge covers in part lies within: its middle, or all of it where it has samples.
    float room = mix(1.4, 0.875, u.device.y);
    vec2 at = corner < 0.5 ? vec2(0.0, r + 2.0 * room - 0.5) : vec2((r + room) * (corner > 1.5 ? 1.0 : -1.0), -r - 0.5);
    vAt = vec3(at.x, r - at.y, at.y + r + 0.5);
    vColor = vec4(color.rgb, size.y * u.view.z);
    vec2 p = vec2(center.x * u.map.x + u.map.y, center.y * u.map.z + u.map.w);
    gl_Position = u.place * vec4(p + vec2(at.x, at.y * up) * 2.0 / (u.view.xy * u.device.x), 0.0, 1.0);
}
