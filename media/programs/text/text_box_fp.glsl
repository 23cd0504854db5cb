#version 120
// The background box behind a text clip.
uniform float colR;
uniform float colG;
uniform float colB;
uniform float colA;

void main()
{
    gl_FragColor = vec4(colR, colG, colB, colA);
}
