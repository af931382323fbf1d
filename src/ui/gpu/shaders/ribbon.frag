#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec3 vAt;
layout(location = 2) in vec2 vShape;
layout(location = 0) out vec4 fragColor;

void main()
{
    // The share of the pixel in two of its rows, or columns where the line is steep.
    vec2 rows = abs(vAt.x + vec2(vShape.y, -vShape.y));
    vec2 across = clamp(vShape.x - rows, 0.0, min(vShape.x * 2.0 - 1.0, 1.0));
    vec2 ends = clamp(vAt.yz, 0.0, 1.0);
    float coverage = (across.x + across.y) * 0.5 * (ends.x + ends.y - 1.0);
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
