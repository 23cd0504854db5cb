#version 120
// One flat colour for the fill or the outline glyphs of a clip.
uniform float colR;
uniform float colG;
uniform float colB;
uniform float colA;

void main()
{
    gl_FragColor = vec4(colR, colG, colB, colA);
}
