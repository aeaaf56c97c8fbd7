// Linked in front of the product's objects: the linker lays out the variables of objects in their order.

extern "C" {
// In the data and in the zero-initialised section.
alignas(64) unsigned char fuzzProductDataBegin[64] = {1};
alignas(64) unsigned char fuzzProductZeroesBegin[64];
}
