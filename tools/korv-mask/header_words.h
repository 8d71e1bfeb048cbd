// Words that columns of personal data are named with, in languages of Europe.
#pragma once

#include <sstream>
#include <string>
#include <string_view>

namespace tool {

struct HeaderWords {
    const char* words;    // in capitals, between blanks
    const char* endings;  // also at the end of a longer word: LASTNAME, HAUPTSTRASSE
};

// English, German, French, Spanish, Italian, Portuguese, Dutch, Polish, Czech, Hungarian, Finnish,
// Swedish, Danish and Norwegian. Words with accents are also listed without them. A word that is
// common with another meaning is left out, such as the Danish BY for a town.
inline constexpr HeaderWords kTelephoneWords = {
    "TEL MOBILE CELL GSM MSISDN MOBIL HANDY TELEFONNUMMER TÉLÉPHONE PORTABLE TELEFONO TELÉFONO "
    "MOVIL MÓVIL CELULAR CELLULARE TELEFONE TELEMOVEL TELEMÓVEL TELEFOON MOBIEL KOMORKA KOMÓRKA "
    "PUHELIN TLF",
    "PHONE FAX TELEFON RUFNUMMER"};

inline constexpr HeaderWords kIdentityWords = {
    "ID SSN NIN SIN TIN VAT IBAN ACCOUNT PASSPORT LICENSE LICENCE KONTO KONTONUMMER REISEPASS "
    "STEUERNUMMER INSEE NIR PASSEPORT COMPTE DNI NIF NIE PASAPORTE CUENTA PASSAPORTO CPF BSN PESEL "
    "NIP HETU PERSONNUMMER CPR FODSELSNUMMER FØDSELSNUMMER",
    "AUSWEIS"};

inline constexpr HeaderWords kPlaceWords = {
    "CITY TOWN STREET ADDRESS ADDR ORT WOHNORT GEBURTSORT ANSCHRIFT VILLE RUE CIUDAD CALLE "
    "DIRECCION DIRECCIÓN DOMICILIO CITTA CITTÀ INDIRIZZO COMUNE CIDADE RUA ENDERECO ENDEREÇO "
    "MORADA STAD STRAAT ADRES WOONPLAATS MIASTO ULICA MESTO MĚSTO ULICE VAROS VÁROS UTCA KAUPUNKI "
    "OSOITE ADRESS GATA GADE",
    "PLACE STADT STRASSE STRAßE ADRESSE"};

inline constexpr HeaderWords kPersonNameWords = {
    "GIVEN FAMILY NOM PRENOM PRÉNOM NOMBRE APELLIDO APELLIDOS NOME COGNOME SOBRENOME APELIDO IMIE "
    "IMIĘ NAZWISKO JMENO JMÉNO PRIJMENI PŘÍJMENÍ ETUNIMI SUKUNIMI",
    "NAME NAAM NAMN NAVN NÉV"};

// Whether a word, in capitals, is among them.
inline bool contains(const HeaderWords& list, std::string_view word) {
    std::string entry;
    for (std::istringstream words(list.words); words >> entry;) {
        if (word == entry) return true;
    }
    for (std::istringstream endings(list.endings); endings >> entry;) {
        if (word.ends_with(entry)) return true;
    }
    return false;
}

}  // namespace tool
