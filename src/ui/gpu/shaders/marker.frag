#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec2 vAt;
layout(location = 2) in vec2 vShape;
layout(location = 0) out vec4 fragColor;

// How much of a pixel lies inside an edge that is `d` pixels away.
float covered(float d)
{
    return clamp(d + 0.5, 0.0, 1.0);
}

void main()
{
    float r = vShape.x;
    float coverage;
    if (vShape.y < 0.5) {
        coverage = covered(r - length(vAt));
    } else {
        float y = vShape.y < 1.5 ? vAt.y : -vAt.y;
        float slant = (r - y - 2.0 * abs(vAt.x)) * 0.4472136;  // both sides rise by 2 in 1
        coverage = covered(slant) * covered(y + r);
    }
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
