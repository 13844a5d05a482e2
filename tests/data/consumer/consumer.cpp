// A program outside the project, built against an installed libpimAvMngApi: it must run
// with the library of the same version as the headers it was compiled with.
#include <cstring>
#include <iostream>

#include "pimAvMngApi/pimAvMngApi.h"

int main() {
    Json::Value request;
    request["id"] = 7;
    std::string text;
    IJsonSerializable::convertJsonToString(request, text);
    std::cout << "consumer: headers " << PIMAV_VERSION_STRING << ", library " << pimAvMngApi::versionString()
              << ", request " << text << std::endl;
    return std::strcmp(PIMAV_VERSION_STRING, pimAvMngApi::versionString()) == 0 && text == "{\"id\":7}" ? 0
                                                                                                        : 1;
}
