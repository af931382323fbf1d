#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec2 vUv;
layout(location = 0) out vec4 fragColor;

layout(binding = 1) uniform sampler2D atlas;  // coverage in the red channel

void main()
{
    fragColor = vec4(vColor.rgb, vColor.a * texture(atlas, vUv).r);
}
