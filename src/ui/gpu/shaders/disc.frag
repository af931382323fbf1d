#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec3 vAt;
layout(location = 0) out vec4 fragColor;

void main()
{
    fragColor = vec4(vColor.rgb, vColor.a * clamp(vAt.z - length(vAt.xy), 0.0, 1.0));
}
