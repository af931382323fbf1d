#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec2 vAt;
layout(location = 2) in vec2 vReach;
layout(location = 0) out vec4 fragColor;

void main()
{
    // The exact share of the pixel, at most that of a box which is thinner than a pixel.
    vec2 inside = clamp(vReach - abs(vAt), vec2(0.0), min(vReach * 2.0 - 1.0, vec2(1.0)));
    fragColor = vec4(vColor.rgb, vColor.a * inside.x * inside.y);
}
