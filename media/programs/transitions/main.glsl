
// Calls the transition function for this pixel. transitionInvert swaps the
// clips in getFromColor / getToColor; progress runs forward either way.
void main()
{
    gl_FragColor = transition(vec2(vUv.x, 1.0 - vUv.y));
}
