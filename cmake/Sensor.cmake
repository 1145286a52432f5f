# Picks the library that the acquisition worker is linked with.
