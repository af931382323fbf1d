#version 440

layout(location = 0) in vec2 center;  // data space
layout(location = 1) in vec2 size;    // radius in points, alpha
layout(location = 2) in vec4 color;   // red, green, blue, the code of shape and corner
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec2 vAt;     // device pixels from the centre, y upwards
layout(location = 2) out vec2 vShape;  // radius in device pixels, 0 disc, 1 triangle upwards, 2 downwards

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view, fade, radius scale
    vec4 device;  // pixels a point
} u;

void main()
{
    float code = floor(color.a * 255.0 + 0.5);
    float shape = floor(code / 4.0 + 0.01);
    float corner = code - shape * 4.0;
    vec2 side = vec2(corner > 1.5 ? 1.0 : -1.0, corner < 0.5 || corner > 2.5 ? 1.0 : -1.0);
    float r = size.x * u.view.w * u.device.x;
    vAt = side * (r + 0.5);  // pixels that the rim covers in part
    if (shape > 0.5) {
        // A triangle fills half of its box: two corners meet beyond the tip, and the others at the base, each so far
        // out that a pixel that an edge covers in part lies within.
        float up = shape < 1.5 ? 1.0 : -1.0;
        vAt = side.y * up > 0.0 ? vec2(0.0, up * (r + 2.3)) : vec2(side.x * (r + 1.4), -up * (r + 0.5));
    }
    vShape = vec2(r, shape);
    vColor = vec4(color.rgb, size.y * u.view.z);
    vec2 p = vec2(center.x * u.map.x + u.map.y, center.y * u.map.z + u.map.w);
    gl_Position = u.place * vec4(p + vAt * 2.0 / (u.view.xy * u.device.x), 0.0, 1.0);
}
