"""Many scenarios: responses of units computed once, and superposed as a product of matrices.

Stores are folders of zarr that several processes write together. All that a piece of work needs stands in its store, so
that a worker is told no more than a path and a number.
"""
