// Depth-only fragment stage: the depth test and write do all the work.

void main()
{
}
