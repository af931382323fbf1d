#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec2 vAt;
layout(location = 2) in vec4 vEdges;
layout(location = 3) in vec2 vShape;
layout(location = 0) out vec4 fragColor;

void main()
{
    float coverage = 1.0;
    if (vShape.x > 0.0) {
        vec2 q = abs(vAt - (vEdges.xy + vEdges.zw) * 0.5) - (vEdges.zw - vEdges.xy) * 0.5 + vShape.x;
        float outside = length(max(q, vec2(0.0))) + min(max(q.x, q.y), 0.0) - vShape.x;
        coverage = clamp(0.5 - outside, 0.0, 1.0);
    } else if (vShape.y > 0.5) {
        vec2 inside = min(vAt + 0.5, vEdges.zw) - max(vAt - 0.5, vEdges.xy);  // the pixel's exact share
        inside = clamp(inside, vec2(0.0), vec2(1.0));
        coverage = inside.x * inside.y;
    }
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
