"""The simulated phone. See README.md in this folder."""
