#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec4 vAt;
layout(location = 2) in vec4 vReachX;
layout(location = 3) in vec4 vReachY;
layout(location = 4) in vec4 vBefore;
layout(location = 5) in vec4 vBeforeLooks;
layout(location = 6) in vec4 vEarlier;
layout(location = 0) out vec4 fragColor;

// The pixel's shares, along one axis, that lie within outline, body, fill and wick.
vec4 within(vec4 reach, vec4 distance)
{
    return clamp(reach - distance, vec4(0.0), clamp(reach * 2.0 - 1.0, vec4(0.0), vec4(1.0)));
}

// The pixel's share between two sides, given how far it lies within each, and half a pixel more.
vec4 along(vec4 inwards, vec4 backwards)
{
    return max(min(inwards, vec4(1.0)) + min(backwards, vec4(1.0)) - 1.0, vec4(0.0));
}

// Of two candles the places between which both lie, along one axis: the outlines, the outline and the other's body, the
// body and the other's outline, the bodies.
vec4 both(float place, float stroke, float other, float otherStroke)
{
    return min(place - vec4(0.0, 0.0, stroke, stroke), other - vec4(0.0, otherStroke, 0.0, otherStroke));
}

// The pixel's share that two candles cover both, wicks apart. An outline has no corners: it is as wide as the outline and
// as high as the body, and as wide as the body and as high as the outline. At this size nothing is left to fill.
float bothCover(vec4 sides, float stroke, vec4 other, float otherStroke)
{
    vec4 x = along(both(sides.x, stroke, other.x, otherStroke), both(sides.z, stroke, other.z, otherStroke));
    vec4 y = along(both(sides.y, stroke, other.y, otherStroke), both(sides.w, stroke, other.w, otherStroke));
    return x.x * y.w + x.y * (y.z - y.w) + x.z * (y.y - y.w) + x.w * (y.x - y.y - y.z + y.w);
}

void main()
{
    vec4 x = within(vReachX, vec4(abs(vAt.x)));
    vec4 y = within(vReachY, abs(vAt.zzzy));
    float filled = x.z * y.z;
    float lines = x.x * y.y + x.y * (y.x - y.y) - filled  // an outline without its corners
                  + x.w * (y.w - y.x);
    // What the two candles before it cover of the pixel, and what of that lies within this one.
    vec2 reach = vec2(vReachX.x, vReachY.x);
    vec4 own = vec4(reach + vAt.xz, reach - vAt.xz);
    float stroke = vReachX.x - vReachX.y, one = vBeforeLooks.x, two = vBeforeLooks.z;
    float first = bothCover(vBefore, one, vBefore, one) * vBeforeLooks.y;
    float second = bothCover(vEarlier, two, vEarlier, two) * vBeforeLooks.w;
    float ofFirst = bothCover(own, stroke, vBefore, one) * vBeforeLooks.y;
    float ofSecond = bothCover(own, stroke, vEarlier, two) * vBeforeLooks.w;
    float ofBoth = bothCover(vBefore, one, vEarlier, two) * vBeforeLooks.y * vBeforeLooks.w;
    // All three share a pixel only beside the first one and the third, within the middle one's width.
    vec4 outer = min(own, vEarlier);
    vec4 bodies = min(own - stroke, vEarlier - two);
    vec4 all = vec4(outer.x, min(bodies.y, vBefore.y), outer.z, min(bodies.w, vBefore.w));
    vec2 triple = along(all, all.zwxy).xy;
    float ofAll = triple.x * triple.y * vBeforeLooks.y * vBeforeLooks.w;
    float covered = vColor.a * (lines + filled * vAt.w - ofFirst - ofSecond + ofAll);
    float free = covered / max(1.0 - first - second + ofBoth, 0.004);
    fragColor = vec4(vColor.rgb, clamp(free, 0.0, 1.0));
}
