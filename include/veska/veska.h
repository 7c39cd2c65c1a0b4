/// Everything: the file object, the tables, their records and the time functions.
#pragma once

#include <veska/CAdditionalAFile.h>
#include <veska/CBaseCell.h>
#include <veska/CMNFInfoTable.h>
#include <veska/CMovieAVFile.h>
#include <veska/CMovieAVFileTable.h>
#include <veska/CMovieCell.h>
#include <veska/CMovieVOB.h>
#include <veska/CPGCInfo.h>
#include <veska/CPlayListSRPTable.h>
#include <veska/CStillAAG.h>
#include <veska/CStillAVFile.h>
#include <veska/CStillAVFileTable.h>
#include <veska/CStillCell.h>
#include <veska/CStillVOG.h>
#include <veska/CTextDataMgr.h>
#include <veska/CTextSet.h>
#include <veska/CTimeMapTable.h>
#include <veska/CUserPGCTable.h>
#include <veska/CVMGI_MAT.h>
#include <veska/CVMGInfo.h>
#include <veska/cell_points.h>
#include <veska/failure.h>
#include <veska/layouts.h>
#include <veska/records.h>
#include <veska/time_functions.h>
