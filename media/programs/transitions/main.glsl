
// Calls the transition function for this pixel. transitionInvert swaps the
// clips in getFromColor / getToColor; progress runs forward either way.
void main()
{
    transitionFramePixels = floor(1.0 / vec2(abs(dFdx(vUv.x)), abs(dFdy(vUv.y))) + 0.5);
    vec4 r = clipArea();
    vec2 st = (vUv - r.xy) / r.zw;
    // Outside the clips both pictures are transparent, and so is the
    // transition, whatever colour its shape would paint there.
    if (any(lessThan(st, vec2(0.0))) || any(greaterThanEqual(st, vec2(1.0)))) {
        gl_FragColor = vec4(0.0);
        return;
    }
    gl_FragColor = transition(vec2(st.x, 1.0 - st.y));
}
