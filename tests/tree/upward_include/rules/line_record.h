// The higher layer of the sample.
