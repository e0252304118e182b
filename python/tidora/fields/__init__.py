"""Fields: values on the nodes of a grid, what they measure, and how they come to other nodes."""
