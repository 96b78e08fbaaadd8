// The least that a C++ program can do: what a run of knob is measured against.
#include <iostream>

int main() { std::cout << "Hello." << std::endl; }
