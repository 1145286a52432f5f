# Picks the library that the acquisition worker is linked with.
add_library(lumeno_sensor ALIAS lumeno_virtual_kinect)
