#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec4 vAt;
layout(location = 2) in vec4 vReachX;
layout(location = 3) in vec4 vReachY;
layout(location = 0) out vec4 fragColor;

// The pixel's shares, along one axis, that lie within outline, body, fill and wick.
vec4 within(vec4 reach, vec4 distance)
{
    return clamp(reach - distance, vec4(0.0), clamp(reach * 2.0 - 1.0, vec4(0.0), vec4(1.0)));
}

void main()
{
    vec4 x = within(vReachX, vec4(abs(vAt.x)));
    vec4 y = within(vReachY, abs(vAt.zzzy));
    float filled = x.z * y.z;
    float lines = x.x * y.y + x.y * (y.x - y.y) - filled  // an outline without its corners
                  + x.w * (y.w - y.x);
    fragColor = vec4(vColor.rgb, vColor.a * (lines + filled * vAt.w));
}
