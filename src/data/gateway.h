#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "mvdb/database.h"
#include "mvdb/dynamic_record.h"

// What the screen asks of the database: its eight files, kept open for the life of the control, with a
// record buffer for each, and the two ways it reads a record.
namespace data {

struct FichiersSSIAD {
    std::shared_ptr<mvdb::Database> TheDatabase;
    std::shared_ptr<mvdb::File> CIVILAIDE, SSIADACCORDS, SSIADCARACTTOURNEE, SSIADELEMGEST, SSIADPROTOCOLE,
        SSIADSOINS, SSIADTOURNEE, TPSTEMPO;
    // Record buffers: each holds the last record read into it, and whoever reads next reuses it.
    mvdb::DynamicRecord EnregCIVILAIDE, EnregSSIADACCORDS, EnregSSIADCARACTTOURNEE, EnregSSIADCARACTTOURNEE2,
        EnregSSIADELEMGEST, EnregSSIADPROTOCOLE, EnregSSIADSOINS, EnregSSIADTOURNEE, EnregTPSTEMPO;
};

// Opens the eight files in their order: CIVILAIDE, SSIADACCORDS, SSIADCARACTTOURNEE, SSIADELEMGEST,
// SSIADPROTOCOLE, SSIADSOINS, SSIADTOURNEE, TPSTEMPO. A failure travels to the caller.
void OuvrirFichiersSSIAD(FichiersSSIAD& fichiers);

// Releases, file by file in the same order, the record buffer and then the file, and last the database.
void FermerFichiersSSIAD(FichiersSSIAD& fichiers);

// Reads `key` into `record`. False only when the key is missing (code 0x8004000B), and `record` then
// keeps what it held. Every other failure counts as found, deliberately: only the one code is tested,
// and `record` then also keeps what it held.
bool LireEnregistrement(mvdb::File& file, mvdb::DynamicRecord& record, const std::string& key);

// Reads `key`; when it is missing, gives a new empty record, whose whole value is "Echec" if `marqueur`.
mvdb::DynamicRecord LireEnregistrementOuVide(mvdb::File& file, const std::string& key, bool marqueur);

// Runs a selection in the calling order that every query of the screen follows: a new record holding the
// sentence, the file to list and the attributes to return, passed whole to Query. Returns the reply.
mvdb::DynamicRecord Interroger(mvdb::Database& database, const std::string& phrase, std::string_view fichier,
                               std::string_view liste);

// Asks the server whether the accord of row `ligne` of a reply listed with "0 1 2 3" (key, first day, last
// day, state) is in an active period: SSIADPERIODEACTIVE with its six arguments answers "1".
bool PeriodeActive(mvdb::Database& database, const mvdb::DynamicRecord& accords, std::int64_t ligne);

}  // namespace data
