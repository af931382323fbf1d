#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec3 vAt;
layout(location = 2) in vec2 vShape;
layout(location = 3) in vec4 vDash;
layout(location = 0) out vec4 fragColor;

void main()
{
    // The share of the pixel in two of its rows, or columns where the line is steep.
    vec2 rows = abs(vAt.x + vec2(vShape.y, -vShape.y));
    vec2 across = clamp(vShape.x - rows, 0.0, min(vShape.x * 2.0 - 1.0, 1.0));
    // Of the pixel's reach along the line, between its ends, what lies within dashes. Beyond the segment lies another one
    // that is dashed alike.
    vec2 ends = clamp(vAt.zy, 0.0, 1.0);
    vec2 reach = vDash.x + vec2(ends.x - 0.5, 0.5 - ends.y) * vDash.y;
    vec2 segment = floor(reach / vDash.w);
    vec2 within = reach - segment * vDash.w, begun = floor(within);
    float whole = floor(vDash.w) * vDash.z + min(fract(vDash.w), vDash.z);
    vec2 dashed = segment * whole + begun * vDash.z + min(within - begun, vDash.z);
    float coverage = (across.x + across.y) * 0.5 * max(dashed.x - dashed.y, 0.0) / vDash.y;
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
