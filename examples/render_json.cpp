// Smallest host program: renders a request document the way the client traces it.
#include <iostream>

#include "ExampleArgs.h"
#include "pimAvMngApi/pimAvMngApi.h"

int main(int argc, char** argv) {
    if (ExampleArgs::printVersion(argc, argv)) {
        return 0;
    }
    Json::Value request;
    request["id"] = 7;
    request["pause"] = true;
    std::string text;
    IJsonSerializable::convertJsonToString(request, text);
    std::cout << text << std::endl;
    return 0;
}
