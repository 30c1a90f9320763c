"""The model-description compiler: one description file per container type in, its VX_ class
out (see docs/model-description.md)."""
