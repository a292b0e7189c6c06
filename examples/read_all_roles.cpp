// Prints the entries of a server in all nine roles, without the passwords.
// Usage: read_all_roles [SERVER]    (default: this machine)
#include <array>
#include <exception>
#include <iostream>
#include <string>

#include <ConfigurationFile/configuration_file.h>

namespace {

struct Entry {
    std::string publicKey, privateKey, certificate, password, trusted;
};

using File = vdcertificates::ConfigurationFile;

/// One row per role: its name, and the call that reads it. Three roles have no trusted certificate.
struct Role {
    const char* name;
    bool (*get)(File&, const std::string& server, Entry&);
};

constexpr std::array roles{
    Role{"cluster",
         [](File& file, const std::string&, Entry& e) {
             return file.get_cluster_certificate_information(e.publicKey, e.privateKey,
                                                             e.certificate, e.password);
         }},
    Role{"subsystems",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_subsystems_certificate_information(server, e.publicKey, e.privateKey,
                                                                e.certificate, e.password);
         }},
    Role{"subsystems server",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_subsystems_server_certificate_information(
                 server, e.publicKey, e.privateKey, e.certificate, e.password, e.trusted);
         }},
    Role{"subsystems remote client",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_subsystems_remote_client_certificate_information(
                 server, e.publicKey, e.privateKey, e.certificate, e.password, e.trusted);
         }},
    Role{"remote client",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_remote_client_certificate_information(
                 server, e.publicKey, e.privateKey, e.certificate, e.password, e.trusted);
         }},
    Role{"web configuration",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_webconfig_certificate_information(server, e.publicKey, e.privateKey,
                                                               e.certificate, e.password);
         }},
    Role{"SIP device",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_devices_certificate_information(server, e.publicKey, e.privateKey,
                                                             e.certificate, e.password, e.trusted);
         }},
    Role{"media retrieval server",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_media_retrieval_server_certificate_information(
                 server, e.publicKey, e.privateKey, e.certificate, e.password, e.trusted);
         }},
    Role{"media retrieval client",
         [](File& file, const std::string& server, Entry& e) {
             return file.get_media_retrieval_client_certificate_information(
                 server, e.publicKey, e.privateKey, e.certificate, e.password, e.trusted);
         }},
};

void print(const char* role, const Entry& entry) {
    std::cout << role << "\n  public key   " << entry.publicKey << "\n  private key  "
              << entry.privateKey << "\n  certificate  " << entry.certificate << "\n  password     "
              << (entry.password.empty() ? "none" : "stored") << "\n  trusted      "
              << entry.trusted << "\n";
}

} // namespace

int main(int count, char** words) {
    try {
        const std::string server = count > 1 ? words[1] : vdcertificates::get_local_machine_name();
        File file;
        for (const Role& role : roles) {
            Entry entry; // stays empty if the file has none
            if (!role.get(file, server, entry)) {
                std::cerr << "the file cannot be read; QNTRACE=11 in the environment says why\n";
                return 1;
            }
            if (!entry.publicKey.empty()) {
                print(role.name, entry);
            }
        }
        return 0;
    } catch (const std::exception& error) { // the machine's keys or its lock
        std::cerr << error.what() << '\n';
        return 1;
    }
}
