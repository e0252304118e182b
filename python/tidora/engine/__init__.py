"""The engine: displacement, sea surface and their nodes, computed by the library of the project.

Nothing here needs the library before it computes.
"""
