#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec2 vAt;
layout(location = 2) in vec3 vShape;
layout(location = 0) out vec4 fragColor;

void main()
{
    vec2 q = abs(vAt) - vShape.xy;
    float outside = length(max(q, vec2(0.0))) + min(max(q.x, q.y), 0.0) - vShape.z;
    fragColor = vec4(vColor.rgb, vColor.a * clamp(0.5 - outside, 0.0, 1.0));
}
