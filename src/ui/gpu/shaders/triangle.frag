#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec3 vAt;
layout(location = 0) out vec4 fragColor;

void main()
{
    // In two rows of the pixel: the sides rise by 2 in 1.
    vec2 width = max(vAt.y + vec2(0.25, -0.25), vec2(0.0));
    vec2 rows = clamp(width * 0.5 + 0.5 - abs(vAt.x), vec2(0.0), min(width, vec2(1.0)));
    float coverage = (rows.x + rows.y) * 0.5 * clamp(vAt.z, 0.0, 1.0);
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
