#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec3 vAcross;
layout(location = 0) out vec4 fragColor;

void main()
{
    float coverage = 1.0;
    if (vAcross.z > 0.5)
        coverage = clamp(min(vAcross.x + 0.5, vAcross.y) - max(vAcross.x - 0.5, -vAcross.y), 0.0, 1.0);
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
