#include <iostream>
#include <string>

#include <ConfigurationFile/configuration_file.h>

int main() {
    vdcertificates::ConfigurationFile file;
    if (!file.set_subsystems_server_certificate_information(
            "SRV01", "/keys/srv01.pub", "/keys/srv01.key", "/keys/srv01.crt", "the password",
            "/keys/authority.crt")) {
        return 1;
    }
    std::string publicKey, privateKey, certificate, password, trusted;
    file.get_subsystems_server_certificate_information("srv01", publicKey, privateKey, certificate,
                                                       password, trusted);
    std::cout << privateKey << '\n';
}
