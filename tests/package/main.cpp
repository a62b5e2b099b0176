#include <zelv/Zelv.h>

#include <iostream>

int main() {
  auto const id = Zelv::GUID::createGUID();
  Zelv::InterfaceFactory::terminate();
  std::cout << "made " << id.toString() << '\n';
  return Zelv::GUID(id.toString()) == id ? 0 : 1;
}
