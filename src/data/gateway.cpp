#include "data/gateway.h"

#include "base/error.h"
#include "base/text.h"
#include "data/layouts.h"

namespace data {

void OuvrirFichiersSSIAD(FichiersSSIAD& f) {
    mvdb::Database& db = *f.TheDatabase;
    f.CIVILAIDE = db.OpenFile(std::string(kCIVILAIDE));
    f.SSIADACCORDS = db.OpenFile(std::string(kSSIADACCORDS));
    f.SSIADCARACTTOURNEE = db.OpenFile(std::string(kSSIADCARACTTOURNEE));
    f.SSIADELEMGEST = db.OpenFile(std::string(kSSIADELEMGEST));
    f.SSIADPROTOCOLE = db.OpenFile(std::string(kSSIADPROTOCOLE));
    f.SSIADSOINS = db.OpenFile(std::string(kSSIADSOINS));
    f.SSIADTOURNEE = db.OpenFile(std::string(kSSIADTOURNEE));
    f.TPSTEMPO = db.OpenFile(std::string(kTPSTEMPO));
}

void FermerFichiersSSIAD(FichiersSSIAD& f) {
    f.EnregCIVILAIDE = {};
    f.CIVILAIDE.reset();
    f.EnregSSIADACCORDS = {};
    f.SSIADACCORDS.reset();
    f.EnregSSIADCARACTTOURNEE = {};
    f.EnregSSIADCARACTTOURNEE2 = {};
    f.SSIADCARACTTOURNEE.reset();
    f.EnregSSIADELEMGEST = {};
    f.SSIADELEMGEST.reset();
    f.EnregSSIADPROTOCOLE = {};
    f.SSIADPROTOCOLE.reset();
    f.EnregSSIADSOINS = {};
    f.SSIADSOINS.reset();
    f.EnregSSIADTOURNEE = {};
    f.SSIADTOURNEE.reset();
    f.EnregTPSTEMPO = {};
    f.TPSTEMPO.reset();
    f.TheDatabase.reset();
}

bool LireEnregistrement(mvdb::File& file, mvdb::DynamicRecord& record, const std::string& key) {
    try {
        file.ReadInto(key, record);
    } catch (const base::Error& error) {
        return error.code() != base::codes::kMissingKey;
    }
    return true;
}

mvdb::DynamicRecord LireEnregistrementOuVide(mvdb::File& file, const std::string& key, bool marqueur) {
    try {
        return file.Read(key);
    } catch (const base::Error& error) {
        if (error.code() != base::codes::kMissingKey) throw;
    }
    mvdb::DynamicRecord empty;
    if (marqueur) empty.setText("Echec");
    return empty;
}

mvdb::DynamicRecord Interroger(mvdb::Database& database, const std::string& phrase, std::string_view fichier,
                               std::string_view liste) {
    mvdb::DynamicRecord requete;
    requete.set(1, phrase);
    requete.set(2, fichier);
    requete.set(3, liste);
    return database.Query(requete.text());
}

bool PeriodeActive(mvdb::Database& database, const mvdb::DynamicRecord& accords, std::int64_t ligne) {
    mvdb::DynamicRecord argument;
    argument.set(1, accords(ligne, 1));
    argument.set(2, accords(ligne, 2));
    argument.set(3, accords(ligne, 3));
    argument.set(4, "E");
    argument.set(5, "SA");
    argument.set(6, "");
    return base::compareValues(database.CallSubroutine("SSIADPERIODEACTIVE", argument.text()).text(), "1") ==
           0;
}

}  // namespace data
