#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec3 vAt;
layout(location = 2) in vec2 vShape;
layout(location = 3) in vec3 vDash;
layout(location = 0) out vec4 fragColor;

void main()
{
    // The share of the pixel in two of its rows, or columns where the line is steep.
    vec2 rows = abs(vAt.x + vec2(vShape.y, -vShape.y));
    vec2 across = clamp(vShape.x - rows, 0.0, min(vShape.x * 2.0 - 1.0, 1.0));
    vec2 ends = clamp(vAt.yz, 0.0, 1.0);
    // Of the pixel's reach along the line, what lies within dashes. Before the line begins, its first dash goes on.
    vec2 reach = vDash.x + vec2(0.5, -0.5) * vDash.y;
    vec2 begun = floor(max(reach, 0.0));
    vec2 dash = min(reach - begun, vDash.z);
    float dashes = ((begun.x - begun.y) * vDash.z + dash.x - dash.y) / vDash.y;
    float coverage = (across.x + across.y) * 0.5 * (ends.x + ends.y - 1.0) * dashes;
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
